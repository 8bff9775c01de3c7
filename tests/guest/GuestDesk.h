#pragma once

#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "devices/DeviceEvents.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Settings.h"

#include <QSqlQuery>

// The device monitor, the extension list and the wake-up dialog over a fresh
// store, wired as the main window wires them, with the packets caught.
struct GuestDesk {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), true);
  TCallControlDev table;
  TNetModule net;
  TDeviceEvents events{table, net};
  TExtsView exts{table, net};
  TMoringCall_Form dialog{table, net, exts};

  GuestDesk() {
    Sys_DM().DataModuleCreate();
    SysConfig().TypeVisible.fill(true);
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 9;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
    QObject::connect(&events, &TDeviceEvents::Ext_AddRow, &exts, &TExtsView::Ext_AddRow);
    QObject::connect(&events, &TDeviceEvents::Ext_UpdateRow, &exts, &TExtsView::Ext_UpdateRow);
    QObject::connect(&events, &TDeviceEvents::moringCallAnswered, &dialog,
                     &TMoringCall_Form::MoringCallAnswered);
    exts.ExtsView_Init();
    At(QDateTime(QDate(2027, 1, 3), QTime(6, 59)));
  }
  ~GuestDesk() { SetPacketOutlet(nullptr, nullptr); }

  static void At(const QDateTime &when) {
    SetClock([when] { return when; });
  }

  // An extension as the enumeration reports it; wakeUp as "YYYYMMDDHHNN".
  void Report(int id, const QByteArray &number, quint16 mix = 0, const QByteArray &wakeUp = {}) {
    QByteArray w(2048, '\0');
    PutU16(w.data(), 6, 34);
    w[12] = 1;
    PutU16(w.data(), 16, quint16(id));
    PutU16(w.data(), 18, 1);
    w[20] = 1;
    w.replace(21, number.size(), number);
    PutU16(w.data(), 64, mix);
    w.replace(82, wakeUp.size(), wakeUp);
    events.processPacketFromSocket_OtherTIS(w.constData());
  }

  // A live status datagram of an extension.
  void Status(int id, int status, quint16 mix = 0, const QByteArray &wakeUp = {}) {
    QByteArray d(108, '\0');
    PutU16(d.data(), 6, 24);
    PutU16(d.data(), 8, quint16(id));
    d[12] = char(136);
    PutU16(d.data(), 14, 1);
    PutU16(d.data(), 16, quint16(status));
    PutU16(d.data(), 22, mix);
    d.replace(42, wakeUp.size(), wakeUp);
    events.Device_UpdateStatus(d.constData(), int(d.size()));
  }

  void SetMemo(int id, const QString &memo) {
    exts.Exts_Write(id, [&](TADOQuery &q) { q.SetString(QStringLiteral("Memo"), memo); });
    exts.Ext_UpdateRow(id);
  }

  QString CellOf(int id, int column) const {
    return exts.AdvStringGrid_Exts.Cell(exts.AdvStringGrid_Exts.SlotOfId(id), column);
  }

  static QStringList Column(const QString &sql) {
    QSqlQuery q(StoreConnection());
    QStringList values;
    if (q.exec(sql))
      while (q.next())
        values << q.value(0).toString();
    return values;
  }
};
