// The guest-room list under load: status datagrams for 3072 extensions handled
// end to end through Device_UpdateStatus, with and without the filled, sorted
// grid behind it; and one 30-second tick over 3072 rows with 300 daily
// wake-ups, its pause between rooms left out. Debug is 0, as at a front desk.
#include "devices/DeviceEvents.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {
std::vector<QByteArray> StatusDatagrams() {
  std::vector<QByteArray> all;
  for (int id = 0; id < kDeviceCount; ++id) {
    QByteArray d(108, '\0');
    PutU16(d.data(), 6, 24);
    PutU16(d.data(), 8, quint16(id));
    PutU16(d.data(), 12, 136);
    PutU16(d.data(), 14, 1);
    PutU16(d.data(), 16, quint16(id % 2 ? 1 : 7));
    PutU16(d.data(), 22, quint16(id & 0x1FC1));
    PutText(d.data(), 62, 20, u"Room %1"_s.arg(id));
    all.push_back(d);
  }
  return all;
}

qint64 g_sent = 0;
void CountPacket(void *, const char *, int) {
  ++g_sent;
}

// A home with its store, and 3072 listed extensions; with a grid, every one has
// its row and the grid is sorted by number, last first.
struct Hotel {
  QTemporaryDir home;
  TCallControlDev table;
  TNetModule net;
  TDeviceEvents events{table, net};
  std::unique_ptr<TExtsView> exts;

  explicit Hotel(bool withGrid) {
    SetAppPath(home.path());
    SysConfig().Debug = 0;
    Sys_DM().DataModuleCreate();
    SysParam().MyID = 9;
    SetPacketOutlet(&CountPacket, nullptr);
    for (int id = 0; id < kDeviceCount; ++id) {
      table.AddPanel(id);
      TPhoneTis &p = *table.Device(id);
      p.ID = id;
      p.DevType = 1;
      p.TelNos = QString::number(8000 + id);
      p.SrvClass = 0;
    }
    if (!withGrid)
      return;
    exts = std::make_unique<TExtsView>(table, net);
    exts->ExtsView_Init();
    QObject::connect(&events, &TDeviceEvents::Ext_UpdateRow, exts.get(),
                     &TExtsView::Ext_UpdateRow);
    for (int id = 0; id < kDeviceCount; ++id)
      exts->Ext_AddRow(id);
    exts->AdvStringGrid_Exts.sort(TExtGridModel::ColTelNos, Qt::DescendingOrder);
  }
  ~Hotel() { SetPacketOutlet(nullptr, nullptr); }
};
} // namespace

static void BM_StatusUpdates(benchmark::State &state) {
  Hotel hotel(state.range(0) != 0);
  const auto datagrams = StatusDatagrams();
  std::size_t next = 0;
  for (auto _ : state) {
    hotel.events.Device_UpdateStatus(datagrams[next].constData(), 108);
    next = (next + 1) % datagrams.size();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetLabel(state.range(0) ? "with the grid" : "no grid");
}
BENCHMARK(BM_StatusUpdates)->Arg(0)->Arg(1);

// Arg: daily wake-ups set; 0 is the baseline, the tick's walk over the rows alone.
static void BM_TickWith300DailyWakeUps(benchmark::State &state) {
  Hotel hotel(true);
  for (int k = 0; k < state.range(0); ++k) {
    const int id = k * 10;
    TExt_Record &e = hotel.table.Device(id)->LastExt;
    e.MoringCall_isEveryDay = true;
    e.MoringCall_EveryDay_Time = TDateTime::FromTime(QTime(7, 0));
    e.MoringCall_Mode = 1 + id % 3;
  }
  hotel.exts->TickYields = false;
  g_sent = 0;
  for (auto _ : state)
    hotel.exts->Timer_ExcuteActionTimer();
  state.counters["packets per tick"] = double(g_sent) / double(state.iterations());
}
BENCHMARK(BM_TickWith300DailyWakeUps)->Arg(300)->Arg(0)->Unit(benchmark::kMillisecond);
