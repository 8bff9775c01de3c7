// How fast the UDP event channel takes status datagrams: the handling alone, and
// end to end over loopback with the 3072 device IDs in turn (Debug 0, as at a
// front desk); and whether a restart's burst gets through whole with Debug 1.
#include "link/Public_Unit.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/DeviceTypes.h"
#include "devices/NetModule.h"
#include "devices/UDPServerMain.h"
#include "directory/SysDM_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QNetworkDatagram>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <benchmark/benchmark.h>

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {
// One status datagram for each device ID, as a busy exchange would send them.
std::vector<QByteArray> StatusDatagrams() {
  std::vector<QByteArray> all;
  all.reserve(kDeviceCount);
  for (int id = 0; id < kDeviceCount; ++id) {
    QByteArray d(108, '\0');
    PutU16(d.data(), 6, 24);
    PutU16(d.data(), 8, quint16(id));
    PutU16(d.data(), 10, 108);
    PutU16(d.data(), 12, 136);
    PutU16(d.data(), 14, id % 3 == 0 ? 5 : 1);
    PutU16(d.data(), 16, quint16(id % 11));
    PutU16(d.data(), 22, quint16(id & 0x1FC1));
    PutText(d.data(), 62, 20, u"Room %1"_s.arg(id));
    all.push_back(d);
  }
  return all;
}

void Setup(QTemporaryDir &home) {
  SetAppPath(home.path());
  SysConfig().Debug = 0;
  SysConfig().Host = u"127.0.0.1"_s;
}
} // namespace

static void BM_HandleStatusDatagram(benchmark::State &state) {
  QTemporaryDir home;
  Setup(home);
  TUDPMainForm form(0);
  qint64 handled = 0;
  form.DeviceStatusHandler = [&](const char *, int) { ++handled; };
  const auto datagrams = StatusDatagrams();
  const QString host = SysConfig().Host;
  std::size_t next = 0;
  for (auto _ : state) {
    form.HandleDatagram(datagrams[next], host);
    next = (next + 1) % datagrams.size();
  }
  benchmark::DoNotOptimize(handled);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_HandleStatusDatagram);

// 100,000 datagrams from a socket in the same process. The sender keeps at most
// a window in flight so that the kernel's receive buffer never overflows: any
// datagram missing at the end was lost by the receiver, not by the machine.
// Arg 0: the console's channel; arg 1, the floor: a bare socket that only
// counts what it reads, in the same loop.
static void BM_LoopbackStatusDatagrams(benchmark::State &state) {
  constexpr qint64 kDatagrams = 100000;
  constexpr qint64 kWindow = 64;
  const bool floor = state.range(0) != 0;
  QTemporaryDir home;
  Setup(home);
  const auto datagrams = StatusDatagrams();
  for (auto _ : state) {
    TUDPMainForm form(0);
    QUdpSocket bare;
    qint64 handled = 0;
    quint16 port = 0;
    if (floor) {
      bare.bind(QHostAddress(u"127.0.0.1"_s), 0);
      port = bare.localPort();
      QObject::connect(&bare, &QUdpSocket::readyRead, [&] {
        while (bare.hasPendingDatagrams()) {
          bare.receiveDatagram();
          ++handled;
        }
      });
    } else {
      form.FormCreate();
      port = form.LocalPort();
      form.DeviceStatusHandler = [&](const char *, int) { ++handled; };
    }
    if (port == 0) {
      state.SkipWithError("listener can't bind");
      return;
    }
    QUdpSocket sender;
    sender.bind(QHostAddress(u"127.0.0.1"_s), 0);
    const QHostAddress to(u"127.0.0.1"_s);

    QElapsedTimer clock;
    clock.start();
    const QDeadlineTimer deadline(60000);
    qint64 sent = 0;
    while (handled < kDatagrams && !deadline.hasExpired()) {
      while (sent < kDatagrams && sent - handled < kWindow) {
        sender.writeDatagram(datagrams[std::size_t(sent % kDeviceCount)], to, port);
        ++sent;
      }
      QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    state.counters["lost"] = double(kDatagrams - handled);
    if (handled < kDatagrams)
      state.SkipWithError("not every datagram was handled");
  }
  state.SetItemsProcessed(state.iterations() * kDatagrams);
  state.SetLabel(floor ? "bare socket" : "console");
}
BENCHMARK(BM_LoopbackStatusDatagrams)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

namespace {
// The exchange's side of a burst: `count` datagrams spread evenly over
// `seconds`, from a thread of its own so that the console's event loop gets no
// pause the real exchange wouldn't give it.
std::thread SendBurst(const std::vector<QByteArray> &datagrams, int count, double seconds,
                      quint16 port) {
  return std::thread([&datagrams, count, seconds, port] {
    QUdpSocket sender;
    sender.bind(QHostAddress(u"127.0.0.1"_s), 0);
    const QHostAddress to(u"127.0.0.1"_s);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < count; ++i) {
      const qint64 due = qint64(double(i) * seconds * 1e9 / count);
      while (clock.nsecsElapsed() < due)
        std::this_thread::yield();
      sender.writeDatagram(datagrams[std::size_t(i) % datagrams.size()], to, port);
    }
  });
}

// Receives one burst with `receive` draining the socket; counts what arrived.
template <typename Drain>
void RunBurst(benchmark::State &state, QUdpSocket &socket, const qint64 &handled, Drain drain,
              const std::vector<QByteArray> &datagrams = StatusDatagrams(), int kBurst = 10000) {
  const qint64 before = handled;
  QElapsedTimer clock;
  clock.start();
  std::thread sender = SendBurst(datagrams, kBurst, 1.0, socket.localPort());
  // Until everything came, or the socket stayed quiet for half a second after
  // the sender was done: what hasn't come by then was dropped by the kernel.
  QElapsedTimer quiet;
  quiet.start();
  qint64 seen = before;
  while (handled - before < kBurst && quiet.elapsed() < 1500) {
    if (socket.waitForReadyRead(10))
      drain();
    if (handled != seen) {
      seen = handled;
      quiet.restart();
    }
  }
  sender.join();
  state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
  state.counters["lost"] = double(kBurst - (handled - before));
}
} // namespace

// The goal: the burst of an exchange's restart, 10,000 status datagrams in one
// second, handled by the channel into a live device table with every line
// logged (Debug=1) and none lost.
static void BM_StatusBurstDebug(benchmark::State &state) {
  QTemporaryDir home;
  Setup(home);
  SysConfig().Debug = 1;
  TCallControlDev table;
  TNetModule net;
  TDeviceEvents events(table, net);
  for (int id = 0; id < kDeviceCount; ++id) {
    table.AddPanel(id);
    table.Device(id)->DevType = AnalogExtension;
  }
  TUDPMainForm form(0);
  if (!form.FormCreate()) {
    state.SkipWithError("listener can't bind");
    return;
  }
  qint64 handled = 0;
  form.DeviceStatusHandler = [&](const char *record, int length) {
    events.Device_UpdateStatus(record, length);
    ++handled;
  };
  form.RefreshMixShow = [&](int id, quint16 mix) { events.refreshMixShow(id, mix); };
  // The channel's own readyRead handler does the draining; the loop here only waits.
  for (auto _ : state)
    RunBurst(state, form.UDPServer, handled, [] {
      QCoreApplication::processEvents(QEventLoop::AllEvents);
    });
  state.counters["rcvbuf"] = form.ReceiveBufferBytes();
  SysConfig().Debug = 0;
}
BENCHMARK(BM_StatusBurstDebug)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

// The other half of the goal: 5,000 finished calls' records in one second, each
// logged and stored, none lost. The store writes each loop turn's records in
// one transaction.
static void BM_CallRecordBurstDebug(benchmark::State &state) {
  QTemporaryDir home;
  Setup(home);
  SysConfig().Debug = 1;
  Sys_DM().DataModuleCreate();
  std::vector<QByteArray> records;
  for (int i = 0; i < 100; ++i) {
    QByteArray d(64, '\0');
    PutU16(d.data(), 6, 41);
    PutU16(d.data(), 8, quint16(i));
    PutU16(d.data(), 10, 64);
    PutU16(d.data(), 12, 1);
    PutText(d.data(), 16, 22, u"80%1"_s.arg(i, 2, 10, QChar(u'0')));
    PutText(d.data(), 40, 20, u"1390000%1"_s.arg(i, 4, 10, QChar(u'0')));
    PutU16(d.data(), 60, quint16(i % 3));
    PutU16(d.data(), 62, quint16(i % 10));
    records.push_back(d);
  }
  TUDPMainForm form(0);
  if (!form.FormCreate()) {
    state.SkipWithError("listener can't bind");
    return;
  }
  qint64 handled = 0;
  form.SpeedButton_FindClick = [&handled] { ++handled; };
  for (auto _ : state)
    RunBurst(
        state, form.UDPServer, handled,
        [] { QCoreApplication::processEvents(QEventLoop::AllEvents); }, records, 5000);
  Sys_DM().PendingWrites().Flush();
  state.counters["stored"] = Sys_DM().GetRecordCount(u"PBXConRecords"_s, u"1=1"_s);
  SysConfig().Debug = 0;
}
BENCHMARK(BM_CallRecordBurstDebug)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

// The floor, in the same run: the same burst into a bare socket with the
// system's default buffer that only counts what it reads. Losses here are the
// machine's, not the console's. Arg 0: the 10,000 status datagrams; arg 1: the
// 5,000 call records.
static void BM_StatusBurstFloor(benchmark::State &state) {
  QUdpSocket socket;
  if (!socket.bind(QHostAddress(u"127.0.0.1"_s), 0)) {
    state.SkipWithError("can't bind");
    return;
  }
  const bool records = state.range(0) != 0;
  const std::vector<QByteArray> datagrams =
      records ? std::vector<QByteArray>(100, QByteArray(64, '\0')) : StatusDatagrams();
  qint64 handled = 0;
  for (auto _ : state)
    RunBurst(
        state, socket, handled,
        [&] {
          while (socket.hasPendingDatagrams()) {
            socket.receiveDatagram();
            ++handled;
          }
        },
        datagrams, records ? 5000 : 10000);
  state.counters["rcvbuf"] =
      socket.socketOption(QAbstractSocket::ReceiveBufferSizeSocketOption).toDouble();
  state.SetLabel(records ? "5,000 call records" : "10,000 status datagrams");
}
BENCHMARK(BM_StatusBurstFloor)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
