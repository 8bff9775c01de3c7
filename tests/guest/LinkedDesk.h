#pragma once

#include "common/LoginSteps.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "devices/DeviceEvents.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "link/SysParam.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QTest>

#include <algorithm>

// The whole console logged in to the simulated exchange on loopback, with
// `rooms` extensions (IDs 0.., numbers 8001..) listed in its grid.
// Set the exchange's devices up between construction and Start().
struct LinkedDesk {
  TestHome home;
  RecordingShell shell;
  bool ready = Prepare(home);
  TMain_Form main;
  TLogin_Form login{&main};
  ExchangeSim sim;

  static bool Prepare(TestHome &home) {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysConfig().TypeVisible.fill(true);
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};
    return true;
  }

  explicit LinkedDesk(int rooms) : Rooms(rooms) {
    sim.AddUser(QStringLiteral("8001"), QStringLiteral("1234"));
    sim.SetPulsePeriod(0);
    sim.AddDevices(0, rooms, 1, QStringLiteral("8001"));
  }
  const int Rooms;

  // Logs in and waits for the grid and the rest of the start (the class
  // names, and the recording server's address, asked at login and again after
  // the last class name), whose requests would otherwise share the sender with
  // a batch; false when that didn't happen in time.
  bool Start() {
    main.ExtsView().ExtsView_Init();
    if (!sim.Listen())
      return false;
    main.Link().StartWorker();
    TypeLogin(login, sim.Port());
    login.Login_TeButtonClick();
    return QTest::qWaitFor(
        [&] {
          const QList<SimPacket> received = sim.Received();
          return main.ExtsView().AdvStringGrid_Exts.ShownCount() == Rooms &&
                 std::count_if(received.cbegin(), received.cend(),
                               [](const SimPacket &p) { return p.TypeCode == 37; }) >= 2;
        },
        30000);
  }
  ~LinkedDesk() { main.Link().StopWorker(); }

  void Check(int id) {
    TExtGridModel &g = main.ExtsView().AdvStringGrid_Exts;
    g.SetCheck(g.SlotOfId(id), QStringLiteral("TRUE"));
  }

  // The rooms the console's requests of a type went to, in order; `code` is
  // the type 24 control code, and wake-up queries are left out.
  QList<int> SentTo(qint16 type, int code = -1) const {
    QList<int> ids;
    for (const SimPacket &p : sim.Received()) {
      if (p.TypeCode != type ||
          (code >= 0 && p.Fields.value(QStringLiteral("Code")).toInt() != code))
        continue;
      if (type == 35 && p.Fields.value(QStringLiteral("Sub")).toInt() == 2)
        continue;
      ids << p.Fields.value(QStringLiteral("DstID")).toInt();
    }
    return ids;
  }
};
