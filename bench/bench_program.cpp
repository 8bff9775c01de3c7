// The program as a process: from start to the login dialog on a new home, and
// its resident memory once 3072 devices are listed on the board; each beside a
// bare Qt widget application (bare_window.cpp) started the same way.
#include "ExchangeSim.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
QString Program() {
  return QStringLiteral(TRUNKDESK_BIN_DIR) + u"/trunkdesk"_s;
}

QProcessEnvironment Offscreen() {
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
  return env;
}

// Resident memory of a process in MB, from /proc.
double ResidentMb(qint64 pid) {
  QFile status(u"/proc/%1/status"_s.arg(pid));
  if (!status.open(QIODevice::ReadOnly))
    return -1;
  for (const QByteArray &line : status.readAll().split('\n')) {
    if (line.startsWith("VmRSS:"))
      return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
  }
  return -1;
}

quint16 FreeUdpPort() {
  QUdpSocket probe;
  probe.bind(QHostAddress::LocalHost, 0);
  return probe.localPort();
}
} // namespace

// Up to the login dialog: the program prints its "running" line right after the
// main window's first show has opened the dialog.
static void BM_StartToLoginDialog(benchmark::State &state) {
  for (auto _ : state) {
    QTemporaryDir home;
    QProcess p;
    p.setProcessEnvironment(Offscreen());
    QElapsedTimer clock;
    clock.start();
    p.start(Program(), {u"--home"_s, home.path(), u"--udp-port"_s, QString::number(FreeUdpPort())});
    QByteArray out;
    while (!out.contains("running") && p.waitForReadyRead(10000))
      out += p.readAllStandardOutput();
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    p.terminate();
    p.waitForFinished(10000);
  }
}
BENCHMARK(BM_StartToLoginDialog)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// The floor: the bare window's start to its "running", and its resident memory
// half a second later.
static void BM_BareWindow(benchmark::State &state) {
  double resident = 0;
  for (auto _ : state) {
    QProcess p;
    p.setProcessEnvironment(Offscreen());
    QElapsedTimer clock;
    clock.start();
    p.start(QStringLiteral(TRUNKDESK_BARE_WINDOW), {u"2000"_s});
    QByteArray out;
    while (!out.contains("running") && p.waitForReadyRead(10000))
      out += p.readAllStandardOutput();
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    QTest::qWait(500);
    resident = ResidentMb(p.processId());
    p.waitForFinished(10000);
  }
  state.counters["resident_MB"] = resident;
}
BENCHMARK(BM_BareWindow)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// Logged in to an exchange of 3072 devices, all on the board.
static void BM_MemoryWith3072Devices(benchmark::State &state) {
  for (auto _ : state) {
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.AddDevices(0, 3000, 1, u"1000"_s);
    sim.AddDevices(3000, 72, 5, u"700"_s);
    sim.Listen();
    QTemporaryDir home;
    QDir().mkpath(home.path() + u"/ini"_s);
    QFile ini(home.path() + u"/ini/sys.ini"_s);
    ini.open(QIODevice::WriteOnly);
    ini.write(
        u"[host]\nIP=127.0.0.1\nPort=%1\n[user]\nuserName=8001\npassWord=1234\nrecPwdFlag=1\n"_s
            .arg(sim.Port())
            .toUtf8());
    ini.close();
    QProcess p;
    p.setProcessEnvironment(Offscreen());
    p.start(Program(), {u"--home"_s, home.path(), u"--login"_s, u"--udp-port"_s,
                        QString::number(FreeUdpPort())});
    // The enumeration ends with the class names and then asks for the recorder.
    // A real event loop: the simulator answers each request as it comes.
    bool listed = false;
    QEventLoop loop;
    QObject::connect(&sim, &ExchangeSim::packetReceived, &loop, [&](const SimPacket &packet) {
      if (packet.TypeCode == 37) {
        listed = true;
        loop.quit();
      }
    });
    QTimer::singleShot(30000, &loop, &QEventLoop::quit);
    loop.exec();
    QTest::qWait(500);
    state.SetIterationTime(1);
    state.counters["resident_MB"] = ResidentMb(p.processId());
    state.counters["listed"] = listed ? 3072 : 0;
    p.terminate();
    p.waitForFinished(10000);
  }
}
BENCHMARK(BM_MemoryWith3072Devices)->UseManualTime()->Iterations(1);
