// The board's layout over 3072 panels, and enumerating 3072 devices from the
// simulated exchange over loopback, each beside its floor.
#include "link/ExchangeLink.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/PhoneBoard.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <vector>

using namespace Qt::StringLiterals;

static void BM_Relayout3072(benchmark::State &state) {
  TCallControlDev table;
  table.ParentWidth = 1280;
  for (int id = 0; id < kDeviceCount; ++id)
    table.AddPanel(id);
  int width = 1280;
  for (auto _ : state) {
    // Alternate widths, as a board being resized would.
    width = width == 1280 ? 1366 : 1280;
    table.ParentWidth = width;
    table.Relayout();
    benchmark::DoNotOptimize(table.Record(3071).Top);
  }
}
BENCHMARK(BM_Relayout3072)->Unit(benchmark::kMicrosecond);

// The floor: 3072 places in rows of the same width, from their index alone.
static void BM_Relayout3072Floor(benchmark::State &state) {
  TCallControlDev table;
  std::vector<std::pair<int, int>> places(kDeviceCount);
  int width = 1280;
  for (auto _ : state) {
    width = width == 1280 ? 1366 : 1280;
    const int pitchX = table.PanelWidth + table.GapX;
    const int columns = qMax(1, width / pitchX);
    for (int i = 0; i < kDeviceCount; ++i)
      places[size_t(i)] = {table.MarginLeft + i % columns * pitchX,
                           table.MarginTop +
                               i / columns * (table.MarginTop + table.PanelHeight + table.GapY)};
    benchmark::DoNotOptimize(places.back().second);
  }
}
BENCHMARK(BM_Relayout3072Floor)->Unit(benchmark::kMicrosecond);

// From the first request to the end of the service class names, Debug 0.
// Arg 1 is the floor: the same lock-step round trips over the same link, each
// answer only telling which request comes next (no table, no board).
static void BM_Enumerate3072(benchmark::State &state) {
  const bool floor = state.range(0) != 0;
  QTemporaryDir home;
  SetAppPath(home.path());
  SysConfig().TypeVisible.fill(true);
  SysConfig().Debug = 0;
  for (auto _ : state) {
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.AddDevices(0, 3000, 1, u"8000"_s);
    sim.AddDevices(3000, 72, 5, u"100"_s);
    QStringList names;
    for (int i = 0; i < 16; ++i)
      names << u"Class%1"_s.arg(i);
    sim.SetServiceClassNames(names);
    sim.Listen();
    TCallControlDev table;
    table.ParentWidth = 1280;
    TNetModule net;
    TDeviceEvents events(table, net);
    TPhoneBoard board(table, net);
    TExchangeLink link;
    QEventLoop loop;
    bool namesDone = false;
    link.SetPacketHandler([&](const char *p, int len) {
      QByteArray work(2048, '\0');
      work.replace(0, qMin(len, 2048), QByteArray(p, qMin(len, 2048)));
      const PacketHeader h = PacketHeader::Read(work.constData());
      if (h.TypeCode == 16) {
        SysParam().MyID = h.ID;
        loop.quit();
      } else if (h.TypeCode == 34 && floor) {
        const int id = GetI16(work.constData(), 16);
        net.NextID = id + 1;
        net.SrvClassIndex = 0;
        net.Send(id == -1 ? TNetModule::QuerySrvClassName : TNetModule::QueryDevice);
      } else if (h.TypeCode == 34) {
        events.processPacketFromSocket_OtherTIS(work.constData());
      } else if (h.TypeCode == 36) {
        const int index = GetU16(work.constData(), 16);
        if (index == 65535) {
          namesDone = true;
          loop.quit();
        }
        if (!floor) {
          events.processPacketFromSocket_SrvClassName(work.constData());
        } else if (index != 65535) {
          net.SrvClassIndex = index + 1;
          net.Send(TNetModule::QuerySrvClassName);
        }
      }
    });
    link.StartWorker();
    link.Winsock_TCP().RemoteHost = u"127.0.0.1"_s;
    link.Winsock_TCP().RemotePort = sim.Port();
    QObject::connect(&link.Winsock_TCP(), &TExchangeSocket::OnConnect,
                     [] { SendLogin(u"8001"_s, u"1234"_s); });
    link.Winsock_TCP().Connect();
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec(); // logged in
    QElapsedTimer clock;
    clock.start();
    if (floor) {
      net.NextID = 0;
      net.Send(TNetModule::QueryDevice);
    } else {
      board.RefreshPhones_tefxButtonClick();
    }
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    loop.exec();
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    state.counters["panels"] = floor ? 0 : table.PanelCount();
    if (!namesDone)
      state.SkipWithError("the enumeration did not finish");
  }
}
BENCHMARK(BM_Enumerate3072)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
