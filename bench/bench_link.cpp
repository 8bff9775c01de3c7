// How fast packets go through the console: the walk and dispatcher alone, and
// end to end from the simulated exchange over loopback. Debug is 0 in both, as
// at a front desk.
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
// As many whole Pulse packets as one block can hold.
QByteArray PulseBlock(int *count) {
  *count = kMaxBlockLength / kPacketHeaderSize;
  QByteArray block;
  for (int i = 0; i < *count; ++i)
    block += ExchangeSim::BuildPacket(1, 1, {});
  return block;
}
} // namespace

static void BM_WalkAndDispatchPulses(benchmark::State &state) {
  QTemporaryDir home;
  SetAppPath(home.path());
  SysConfig().Debug = 0;
  TMain_Form main;
  int count = 0;
  const QByteArray block = PulseBlock(&count);
  for (auto _ : state)
    main.Link().ProcessSocketBlock(block.constData(), int(block.size()));
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_WalkAndDispatchPulses)->Unit(benchmark::kMicrosecond);

// The simulator writes 100,000 Pulses at once; the time runs until the console
// has dispatched the last of them.
static void BM_LoopbackPulses(benchmark::State &state) {
  constexpr int kPulses = 100000;
  QTemporaryDir home;
  SetAppPath(home.path());
  SysConfig().Debug = 0;
  for (auto _ : state) {
    ExchangeSim sim;
    sim.Listen();
    TMain_Form main;
    int dispatched = 0;
    QEventLoop loop; // a real event loop, as the program runs one
    main.Link().SetPacketHandler([&](const char *p, int len) {
      main.processPacketFromSocket(p, len);
      if (++dispatched == kPulses)
        loop.quit();
    });
    main.Link().StartWorker();
    main.Link().Winsock_TCP().RemoteHost = u"127.0.0.1"_s;
    main.Link().Winsock_TCP().RemotePort = sim.Port();
    main.Link().Winsock_TCP().Connect();
    if (!QTest::qWaitFor(
            [&] { return sim.IsConnected() && main.Link().Winsock_TCP().State() == 7; }, 10000)) {
      state.SkipWithError("no connection");
      return;
    }
    QElapsedTimer clock;
    clock.start();
    sim.SendBurst(ExchangeSim::BuildPacket(1, 1, {}), kPulses);
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    loop.exec();
    const bool all = dispatched >= kPulses;
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    state.counters["lost"] = double(kPulses - dispatched);
    if (!all)
      state.SkipWithError("not every packet was dispatched");
  }
  state.SetItemsProcessed(state.iterations() * kPulses);
}
BENCHMARK(BM_LoopbackPulses)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
