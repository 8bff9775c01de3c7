// The guest-room list under load: status datagrams for 3072 extensions handled
// end to end through Device_UpdateStatus, with and without the filled, sorted
// grid behind it; and one 30-second tick over 3072 rows with 300 daily
// wake-ups, its pause between rooms left out; and the shift report over the
// same hotel with a year of records, beside the same store reads straight on
// SQLite. Debug is 0, as at a front desk.
#include "RawStore.h"
#include "devices/DeviceEvents.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "guest/ShiftReport.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlQuery>
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

namespace {
// The report's present: the last day of a year of records.
const QDateTime kReportNow(QDate(2026, 11, 21), QTime(20, 0));

// A year of the console's records in the hotel's store, filled in one
// statement each: 100,000 call records of the exchange, 100,000 rows of the
// call log (missed, answered, dialled in turn), 100,000 wake-up results (one
// in four failed) and 1,000 tasks (half open, most with a deadline). Of the
// 3072 rooms, 1,000 have a wake-up set, 300 a daily one, 200 do-not-disturb.
void FillYear(Hotel &hotel) {
  QSqlQuery q(StoreConnection());
  const QString from = FormatFull(TDateTime::FromQDateTime(kReportNow) - 365);
  const auto fill = [&](const QString &insert) {
    const QString sql =
        u"WITH RECURSIVE c(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM c WHERE i < 99999) "_s +
        insert;
    if (!q.exec(QString(sql).replace(u"$FROM"_s, from)))
      qFatal("%s", qPrintable(sql));
  };
  fill(u"INSERT INTO PBXConRecords (Caller, Called, startTime, stopTime, assType, IOFlag, "
       u"RecType) SELECT 8000 + i % 3000, 13800000000 + i * 7919 % 100000000, "
       u"datetime(julianday('$FROM') + 365.0 * i / 100000), "
       u"datetime(julianday('$FROM') + 365.0 * i / 100000 + 90.0 / 86400), 0, i % 3, i % 10 "
       u"FROM c"_s);
  fill(u"INSERT INTO conRecords (TelNos, DateTime, State) SELECT "
       u"13800000000 + i * 7919 % 500, datetime(julianday('$FROM') + 365.0 * i / 100000), "
       u"1 + i % 3 FROM c"_s);
  fill(u"INSERT INTO MoringCallLog (RoomNo, Ext, CreateTime, MoringCallTime, State) SELECT "
       u"i % 3072, 8000 + i % 3072, datetime(julianday('$FROM') + 365.0 * i / 100000), "
       u"datetime(julianday('$FROM') + 365.0 * i / 100000), CASE WHEN i % 4 = 0 THEN 2 ELSE 1 "
       u"END FROM c"_s);
  fill(u"INSERT INTO Task_Table (Title, Context, Status, createDateTime, LastDateTime, creater, "
       u"contacters) SELECT 'Task ' || i, 'Room ' || (i % 3072), i % 2, '$FROM', "
       u"CASE WHEN i % 10 = 0 THEN NULL ELSE datetime(julianday('$FROM') + 365.0 + (i % 48) / 24.0 "
       u"- 1) END, '8001', '' FROM c WHERE i < 1000"_s);
  const TDateTime now = TDateTime::FromQDateTime(kReportNow);
  for (int id = 0; id < kDeviceCount; ++id) {
    TPhoneTis &p = *hotel.table.Device(id);
    p.LastExt.RoomNo = QString::number(100 + id);
    if (id % 3 == 0)
      p.MoringCallTime = now + (id % 24) / 24.0;
    if (id % 10 == 0) {
      p.LastExt.MoringCall_isEveryDay = true;
      p.LastExt.MoringCall_EveryDay_Time = TDateTime::FromTime(QTime(id % 24, 30));
    }
    if (id % 15 == 0) {
      p.NoDisturbMode = 1;
      p.LastExt.NoDisturb_Time1_Checked = true;
      p.LastExt.NoDisturb_Time1_Start = TDateTime::FromTime(QTime(22, 0));
      p.LastExt.NoDisturb_Time1_End = TDateTime::FromTime(QTime(23, 30));
    }
  }
}
} // namespace

// The report built as the key builds it, the last handover twelve hours ago.
static void BM_ShiftReport(benchmark::State &state) {
  Hotel hotel(true);
  FillYear(hotel);
  SetClock([] { return kReportNow; });
  const TDateTime now = Now();
  int rows = 0;
  for (auto _ : state) {
    const TShiftReportContent r =
        BuildShiftReport(hotel.table, hotel.exts->AdvStringGrid_Exts, now, now - 0.5);
    benchmark::DoNotOptimize(r.Html());
    rows = 0;
    for (const TShiftReportSection &s : r.Sections)
      rows += int(s.Rows.size());
  }
  state.counters["rows"] = rows;
  SetClock({});
}
BENCHMARK(BM_ShiftReport)->Unit(benchmark::kMillisecond);

// The floor: the report's three store reads straight on SQLite, every column
// of every row read, and no room, sort or HTML.
static void BM_ShiftReportStoreFloor(benchmark::State &state) {
  Hotel hotel(false);
  FillYear(hotel);
  const TDateTime now = TDateTime::FromQDateTime(kReportNow);
  RawStore raw(Sys_DM().FileName());
  const QStringList reads = {
      u"SELECT CreateTime, RoomNo, Ext, MoringCallTime FROM MoringCallLog WHERE State = 2 AND "
      u"CreateTime >= '%1' AND CreateTime <= '%2' ORDER BY CreateTime, ID"_s.arg(
          FormatFull(now - 0.5), FormatFull(now)),
      u"SELECT LastDateTime, Title, contacters FROM Task_Table WHERE Status = 0 ORDER BY "
      u"LastDateTime, ID"_s,
      u"SELECT TelNos, DateTime, State FROM conRecords WHERE DateTime >= '%1' ORDER BY "
      u"DateTime, ID"_s.arg(FormatFull(now - 1))};
  int rows = 0;
  for (auto _ : state) {
    rows = 0;
    for (const QString &sql : reads)
      rows += raw.Rows(sql);
  }
  state.counters["store rows"] = rows;
}
BENCHMARK(BM_ShiftReportStoreFloor)->Unit(benchmark::kMillisecond);
