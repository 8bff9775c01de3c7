// The console of the benchmarks that drive a whole desk: logged in to the
// simulated exchange on loopback, its rooms listed, with a shell whose
// messages end the wait a run is in.
#pragma once

#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "guest/ExtsView.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "directory/SysDM_Unit.h"

#include "ExchangeSim.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <functional>
#include <memory>

// Runs the event loop until `done` holds or `timeoutMs` passed; whether it
// holds. Unlike QTest::qWaitFor it never sleeps between looks, which would
// put milliseconds into every round trip measured.
inline bool RunUntil(const std::function<bool()> &done, int timeoutMs = 60000) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > timeoutMs)
      return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
  }
  return true;
}

// The desk's person: every message ends the wait the run is in.
class QuietShell final : public LogShell {
public:
  std::function<void(const QString &)> OnMessage;
  void Message(MessageKind kind, const QString &text) override {
    LogShell::Message(kind, text);
    if (OnMessage)
      OnMessage(text);
  }
};

// The console logged in to the simulated exchange with its rooms listed.
struct Desk {
  QTemporaryDir home;
  QuietShell shell;
  std::unique_ptr<TMain_Form> main;
  std::unique_ptr<TLogin_Form> login;
  ExchangeSim sim;
  bool ready = false;
  QString LastMessage;

  explicit Desk(int rooms) {
    SetAppPath(home.path());
    SetShell(&shell);
    SysConfig().Debug = 0;
    SysConfig().TypeVisible.fill(true);
    Sys_DM().DataModuleCreate();
    main = std::make_unique<TMain_Form>();
    login = std::make_unique<TLogin_Form>(main.get());
    main->ExtsView().ExtsView_Init();
    sim.AddUser(QStringLiteral("8001"), QStringLiteral("1234"));
    sim.SetPulsePeriod(0);
    sim.SetPushOnChange(false); // the walk, not the status stream, is measured
    sim.AddDevices(0, rooms, 1, QStringLiteral("8001"));
    if (!sim.Listen())
      return;
    main->Link().StartWorker();
    login->FormShow();
    login->TelNo_TeComboBox = QStringLiteral("8001");
    login->Pwd_TeMaskEdit = QStringLiteral("1234");
    login->HostIP_TeMaskEdit = QStringLiteral("127.0.0.1");
    login->HostPort_TeMaskEdit = QString::number(sim.Port());
    login->Login_TeButtonClick();
    ready = RunUntil(
        [&] {
          const QList<SimPacket> got = sim.Received();
          return main->ExtsView().AdvStringGrid_Exts.ShownCount() == rooms &&
                 std::any_of(got.cbegin(), got.cend(),
                             [](const SimPacket &p) { return p.TypeCode == 37; });
        },
        60000);
  }

  // Runs `start` and the event loop until `messages` messages came; seconds.
  double Until(int messages, const std::function<void()> &start) {
    QEventLoop loop;
    int seen = 0;
    shell.OnMessage = [&](const QString &text) {
      LastMessage = text;
      if (++seen == messages)
        loop.quit();
    };
    QTimer::singleShot(120000, &loop, &QEventLoop::quit);
    QElapsedTimer clock;
    clock.start();
    start();
    if (seen < messages)
      loop.exec();
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    shell.OnMessage = nullptr;
    return seen >= messages ? seconds : -1;
  }
};


// The main of a desk's benchmarks: the application, the runs, and the desk's
// link worker stopped before the program ends, so its thread doesn't outlive
// the application.
inline int RunDeskBenchmarks(int argc, char **argv, const std::function<Desk *()> &desk) {
  QCoreApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  desk()->main->Link().StopWorker();
  return 0;
}
