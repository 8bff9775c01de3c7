// How fast packets go through the console: the walk and dispatcher alone, and
// end to end from the simulated exchange over loopback. Debug is 0 in both, as
// at a front desk.
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>
#include <QSemaphore>
#include <QTcpSocket>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <atomic>
#include <thread>

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

// The floor of the walk: each packet's header read and the walk moved on by its
// length, nothing dispatched.
static void BM_WalkPulsesFloor(benchmark::State &state) {
  int count = 0;
  const QByteArray block = PulseBlock(&count);
  for (auto _ : state) {
    int types = 0;
    for (int at = 0; at + kPacketHeaderSize <= block.size();) {
      const PacketHeader h = PacketHeader::Read(block.constData() + at);
      types += h.TypeCode;
      at += qMax<int>(h.Len, kPacketHeaderSize);
    }
    benchmark::DoNotOptimize(types);
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_WalkPulsesFloor)->Unit(benchmark::kMicrosecond);

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

// The floor of the loopback figure: the same burst read by a bare socket in an
// event loop that only counts the bytes.
static void BM_LoopbackPulsesFloor(benchmark::State &state) {
  constexpr int kPulses = 100000;
  const QByteArray pulse = ExchangeSim::BuildPacket(1, 1, {});
  const qint64 total = qint64(kPulses) * pulse.size();
  for (auto _ : state) {
    ExchangeSim sim;
    sim.Listen();
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, sim.Port());
    if (!socket.waitForConnected(10000) || !QTest::qWaitFor([&] { return sim.IsConnected(); })) {
      state.SkipWithError("no connection");
      return;
    }
    qint64 received = 0;
    QEventLoop loop;
    QObject::connect(&socket, &QTcpSocket::readyRead, &loop, [&] {
      received += socket.readAll().size();
      if (received >= total)
        loop.quit();
    });
    QElapsedTimer clock;
    clock.start();
    sim.SendBurst(pulse, kPulses);
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    loop.exec();
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    if (received < total)
      state.SkipWithError("not every byte came");
  }
  state.SetItemsProcessed(state.iterations() * kPulses);
}
BENCHMARK(BM_LoopbackPulsesFloor)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

namespace {
// Context switches of every thread of this process but the main one, from
// /proc: how often the receive worker woke.
double WorkerSwitches() {
  double total = 0;
  const QString self = QString::number(QCoreApplication::applicationPid());
  for (const QString &tid : QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    if (tid == self)
      continue;
    QFile status(u"/proc/self/task/%1/status"_s.arg(tid));
    if (!status.open(QIODevice::ReadOnly))
      continue;
    for (const QByteArray &line : status.readAll().split('\n'))
      if (line.contains("ctxt_switches:"))
        total += line.mid(line.indexOf(':') + 1).trimmed().toDouble();
  }
  return total;
}

// Each iteration a second of the event loop; the wake-ups of the last one.
double WakeUpsPerSecond(benchmark::State &state) {
  double perSecond = 0;
  for (auto _ : state) {
    const double before = WorkerSwitches();
    QElapsedTimer clock;
    clock.start();
    QTest::qWait(1000);
    perSecond = (WorkerSwitches() - before) * 1000.0 / double(clock.elapsed());
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
  }
  return perSecond;
}
} // namespace

// An idle console with its receive worker running: how many times a second
// its threads other than the main one wake (goal: under 50).
static void BM_IdleWorkerWakeUps(benchmark::State &state) {
  QTemporaryDir home;
  SetAppPath(home.path());
  TMain_Form main;
  main.Link().StartWorker();
  QTest::qWait(100);
  const double perSecond = WakeUpsPerSecond(state);
  main.Link().StopWorker();
  state.counters["wakeups_per_s"] = perSecond;
}
BENCHMARK(BM_IdleWorkerWakeUps)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);

// The baseline the counter must tell apart: a thread that polls its semaphore
// every millisecond, as the worker once did, beside one asleep on it.
static void BM_IdleThreadWakeUpsBaseline(benchmark::State &state) {
  const bool polling = state.range(0) != 0;
  QSemaphore wake;
  std::atomic<bool> stop{false};
  std::thread thread([&] {
    while (!stop) {
      if (polling)
        wake.tryAcquire(1, 1);
      else
        wake.acquire();
    }
  });
  QTest::qWait(100);
  const double perSecond = WakeUpsPerSecond(state);
  stop = true;
  wake.release();
  thread.join();
  state.counters["wakeups_per_s"] = perSecond;
  state.SetLabel(polling ? "polling every 1 ms" : "asleep on a semaphore");
}
BENCHMARK(BM_IdleThreadWakeUpsBaseline)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond);
