// The device table kept true: reports of the enumeration, live status, the
// service class answers and MixData.
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/DeviceEvents.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Report {
  int Id;
  int Type;
  int Status;
  QByteArray Number;
  QByteArray Name = {};
  int SrvClass = 0;
  quint16 Mix = 0;
  qint16 Signal = 0;
  quint16 Flags = 0;
  quint16 State = 0;
  QByteArray ModuleType = {};
  QByteArray WakeUp = {};
};

QByteArray Work(int type, int sub) {
  QByteArray w(2048, '\0');
  PutU16(w.data(), 6, quint16(type));
  w[12] = char(sub);
  return w;
}

QByteArray ReportPacket(const Report &r) {
  QByteArray w = Work(34, 1);
  PutU16(w.data(), 16, quint16(r.Id));
  PutU16(w.data(), 18, quint16(r.Type));
  w[20] = char(r.Status);
  w.replace(21, r.Number.size(), r.Number);
  w.replace(42, r.Name.size(), r.Name);
  w[63] = char(r.SrvClass);
  PutU16(w.data(), 64, r.Mix);
  PutU16(w.data(), 66, quint16(r.Signal));
  PutU16(w.data(), 68, r.Flags);
  PutU16(w.data(), 70, r.State);
  w.replace(72, r.ModuleType.size(), r.ModuleType);
  w.replace(82, r.WakeUp.size(), r.WakeUp);
  return w;
}

QByteArray Datagram(int id, int type, int status, quint16 mix = 0) {
  QByteArray d(108, '\0');
  PutU16(d.data(), 6, 24);
  PutU16(d.data(), 8, quint16(id));
  d[12] = char(136);
  PutU16(d.data(), 14, quint16(type));
  PutU16(d.data(), 16, quint16(status));
  PutU16(d.data(), 22, mix);
  return d;
}

struct Monitor {
  TestHome home;
  RecordingShell shell;
  TCallControlDev table;
  TNetModule net;
  TDeviceEvents events{table, net};

  Monitor() {
    home.CopyShipped(u"ini/lang_chinese.lan"_s);
    home.CopyShipped(u"ini/sys_RadioB.ini"_s);
    LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_chinese.lan"_s));
    ReloadTypeNames();
    LoadStateCodes(AppFile(u"ini/sys_RadioB.ini"_s));
    SysConfig().TypeVisible.fill(true);
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 9;
    table.ParentWidth = 755;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
  }
  ~Monitor() { SetPacketOutlet(nullptr, nullptr); }
  void Feed(const Report &r) {
    events.processPacketFromSocket_OtherTIS(ReportPacket(r).constData());
  }
  // The last request: "type:u16 at 16".
  QString LastRequest() const {
    if (CapturedPackets.isEmpty())
      return QString();
    const QByteArray &p = CapturedPackets.last();
    return u"%1:%2"_s.arg(GetI16(p.constData(), 6)).arg(GetU16(p.constData(), 16));
  }
};
} // namespace

class DeviceEventsTest : public QObject {
  Q_OBJECT

private slots:
  void extensionReportMakesItsPanelAndAsksForTheNext() {
    Monitor m;
    QSignalSpy row(&m.events, &TDeviceEvents::Ext_AddRow);
    m.Feed({3, 1, 1, "8003", {}, 2, 0x0005, 0, 0, 0, {}, "20261122 0630"});
    const TPhoneTis &p = m.table.Record(3);
    QVERIFY(p.InList);
    QCOMPARE(p.Panel.TelNosLabel, u"[8003]"_s);
    QCOMPARE(p.Panel.StatusLabel, u"["_s + LangText(742) + u']');
    QCOMPARE(p.Panel.NameLabel, u"..."_s);
    QCOMPARE(p.Panel.Colour, m.table.Colours[1]);
    QCOMPARE(p.Panel.PhoneButtonGlyph, u"LoginOnNodisturb_SpeedButton"_s);
    QCOMPARE(p.SrvClass, 2);
    QCOMPARE(p.NoDisturbMode, 1);
    QCOMPARE(p.MoringCallTime.ToQDateTime(), QDateTime(QDate(2026, 11, 22), QTime(6, 30)));
    QCOMPARE(m.table.PortsID_ComboBox, QStringList{u"3"_s});
    QCOMPARE(row.size(), 1);
    QCOMPARE(m.LastRequest(), u"34:4"_s); // lock step: the next ID
  }

  void hiddenTypeGetsNoPanelButTheWalkGoesOn() {
    Monitor m;
    SysConfig().TypeVisible[1] = false;
    m.Feed({3, 1, 1, "8003"});
    QVERIFY(!m.table.Record(3).InList);
    QCOMPARE(m.LastRequest(), u"34:4"_s);
  }

  void idOutsideTheTableIsDropped() {
    Monitor m;
    SysConfig().Debug = 1;
    m.Feed({5000, 1, 1, "8003"});
    QCOMPARE(m.table.PanelCount(), 0);
    QVERIFY(LogMemo().Lines().join(u' ').contains(u"ID 5000 outside the table"_s));
  }

  // A trunk's status 5 reads differently in a report and in a datagram.
  void trunkStatusAsymmetries() {
    Monitor m;
    m.Feed({40, 5, 5, "1", "T1"});
    QCOMPARE(m.table.Record(40).Panel.Colour, m.table.Colours[9]);
    QCOMPARE(m.table.Record(40).Panel.TelNosLabel, NameLine(5, u"1"_s));
    const QByteArray live = Datagram(40, 5, 5);
    m.events.Device_UpdateStatus(live.constData(), int(live.size()));
    QCOMPARE(m.table.Record(40).Panel.Colour, m.table.Colours[5]);
    const QByteArray seventeen = Datagram(40, 5, 17);
    m.events.Device_UpdateStatus(seventeen.constData(), int(seventeen.size()));
    QCOMPARE(m.table.Record(40).Panel.Colour, kStatus17Colour);
    QCOMPARE(m.table.Record(40).Panel.StatusLabel, u"DTMF_Rev"_s);
    QCOMPARE(m.table.Record(40).Status, 5); // a trunk's live status is not stored
    const QByteArray broken = Datagram(40, 5, 12);
    m.events.Device_UpdateStatus(broken.constData(), int(broken.size()));
    QCOMPARE(m.table.Record(40).Panel.PhoneButtonGlyph, u"image/lstrunk_error.bmp"_s);
  }

  void moduleReport_data() {
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("icon");
    QTest::newRow("-1") << -1 << u"SpeedButton_Signal0"_s;
    QTest::newRow("24") << 24 << u"SpeedButton_Signal5"_s;
    QTest::newRow("31") << 31 << u"SpeedButton_Signal5"_s;
    QTest::newRow("9") << 9 << u"SpeedButton_Signal2"_s;
  }
  void moduleReport() {
    QFETCH(int, signal);
    QFETCH(QString, icon);
    Monitor m;
    // Idle module: SIM in, lock state unknown, WCDMA, line state 9.
    m.Feed({60,
            12,
            0,
            "3",
            {},
            0,
            0,
            qint16(signal),
            0x0001,
            quint16((9 << 8) | (4 << 4)),
            QByteArray("M35ABCDEFGHIJ")});
    const TPhoneTis &p = m.table.Record(60);
    QCOMPARE(p.Panel.SignalIcon, icon);
    QCOMPARE(p.Panel.StatusLabel, StateCodeText(9));
    QCOMPARE(p.Panel.Colour, m.table.Colours[9]);
    QVERIFY(!p.Panel.PhoneButtonVisible);
    QVERIFY(!p.Panel.TelNosVisible);
    QCOMPARE(p.Panel.NetTypeIcon, u"SpeedButton_NetType_WCDMA"_s);
    QCOMPARE(p.Panel.SimIcon, u"SpeedButton_SimCard"_s);
    QVERIFY(p.Panel.PinLockIcon.isEmpty());             // unknown: no icon ...
    QVERIFY(p.Panel.Hint.contains(u"锁PIN码 :未锁"_s)); // ... and counted unlocked
    QCOMPARE(p.ModuleType, u"M35ABCDEFG"_s);            // a full ten-byte field ends at its end
    QVERIFY(p.Panel.Hint.endsWith(u"模块类型:M35ABCDEFG"_s));
  }

  void endOfEnumeration() {
    Monitor m;
    m.Feed({1, 1, 1, "8001"});
    m.Feed({2, 1, 1, "8002"});
    m.table.AddPanel(7); // from an older layout, not reported now
    m.net.SrvClassIndex = 5;
    QSignalSpy done(&m.events, &TDeviceEvents::enumerationFinished);
    m.Feed({-1, 0, 0, {}});
    QCOMPARE(done.size(), 1);
    QVERIFY(!m.table.Record(7).InList);
    QVERIFY(m.table.Record(1).InList);
    QCOMPARE(m.net.SrvClassIndex, 0);
    QCOMPARE(m.LastRequest(), u"36:0"_s);
    QVERIFY(m.events.Timer_ExcuteAction.isActive());
    QCOMPARE(m.events.Timer_ExcuteAction.interval(), 30000);
  }

  void liveExtensionStatus() {
    Monitor m;
    m.Feed({3, 1, 1, "8003"});
    QSignalSpy row(&m.events, &TDeviceEvents::Ext_UpdateRow);
    QByteArray d = Datagram(3, 1, 7, 0x0401);
    PutU16(d.data(), 40, 4);
    d.replace(62, 4, "Room");
    m.events.Device_UpdateStatus(d.constData(), 66); // short: the rest reads as zeros
    const TPhoneTis &p = m.table.Record(3);
    QCOMPARE(p.Status, 7);
    QCOMPARE(p.SrvClass, 4);
    QCOMPARE(p.NoDisturbMode, 3);
    QCOMPARE(p.Panel.NameLabel, u"Room"_s);
    QCOMPARE(p.Panel.PhoneButtonGlyph, u"LoginOnNodisturb_Out_SpeedButton"_s);
    QVERIFY(p.LiveUpdate);
    QCOMPARE(row.size(), 1);
  }

  void statusOfAnUnseenOrForeignDevice() {
    Monitor m;
    QSignalSpy row(&m.events, &TDeviceEvents::Ext_UpdateRow);
    const QByteArray unseen = Datagram(3, 1, 7);
    m.events.Device_UpdateStatus(unseen.constData(), 108);
    QCOMPARE(m.table.Record(3).Status, 0); // no panel: nothing changes
    QCOMPARE(row.size(), 0);
    const QByteArray foreign = Datagram(60000, 1, 7);
    m.events.Device_UpdateStatus(foreign.constData(), 108);
    m.events.Device_UpdateStatus(foreign.constData(), 3); // a stub of a datagram
  }

  void mixData_data() {
    QTest::addColumn<int>("mix");
    QTest::addColumn<int>("noDisturb");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("voiceMail");
    QTest::newRow("0x0604 is no mode") << 0x0604 << 0 << 1 << 0;
    QTest::newRow("0x0200") << 0x0200 << 2 << 1 << 0;
    QTest::newRow("0x1800 is mode 1") << 0x1800 << 0 << 1 << 0;
    QTest::newRow("0x0800") << 0x0800 << 0 << 2 << 0;
    QTest::newRow("0x1000 and voice mail") << 0x1040 << 0 << 3 << 1;
  }
  void mixData() {
    QFETCH(int, mix);
    QFETCH(int, noDisturb);
    QFETCH(int, mode);
    QFETCH(int, voiceMail);
    QCOMPARE(NoDisturbModeOf(quint16(mix)), noDisturb);
    QCOMPARE(MixData2MoringCallMode(quint16(mix)), mode);
    QCOMPARE(VoiceMailOf(quint16(mix)), voiceMail);
  }

  void wakeUpText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("when");
    QTest::newRow("plain") << u"202611220630"_s << QDateTime(QDate(2026, 11, 22), QTime(6, 30));
    QTest::newRow("blanks") << u" 2026 1122 0630 "_s
                            << QDateTime(QDate(2026, 11, 22), QTime(6, 30));
    QTest::newRow("empty") << QString() << QDateTime();
    QTest::newRow("garbage") << u"tomorrow 7am"_s << QDateTime();
  }
  void wakeUpText() {
    QFETCH(QString, text);
    QFETCH(QDateTime, when);
    const TDateTime t = TDeviceEvents::ParseWakeUpText(text);
    QCOMPARE(t.IsZero(), !when.isValid());
    if (when.isValid())
      QCOMPARE(t.ToQDateTime(), when);
  }

  void serviceClassNamesOneByOne() {
    Monitor m;
    QByteArray w = Work(36, 1);
    w.replace(18, 5, "Guest");
    m.events.processPacketFromSocket_SrvClassName(w.constData());
    PutU16(w.data(), 16, 1);
    w.replace(18, 5, "Staff");
    m.events.processPacketFromSocket_SrvClassName(w.constData());
    QCOMPARE(m.events.SrvClassNames.stringList(), (QStringList{u"1:Guest"_s, u"2:Staff"_s}));
    QCOMPARE(m.LastRequest(), u"36:2"_s);
    PutU16(w.data(), 16, 65535); // the end: now the recording server
    m.events.processPacketFromSocket_SrvClassName(w.constData());
    QCOMPARE(GetI16(CapturedPackets.last().constData(), 6), qint16(37));
    PutU16(w.data(), 16, 0); // a new list starts empty
    m.events.processPacketFromSocket_SrvClassName(w.constData());
    QCOMPARE(m.events.SrvClassNames.rowCount(), 1);
  }

  void serviceClassAnswers() {
    Monitor m;
    m.Feed({3, 1, 1, "8003", {}, 1});
    m.net.SrvClass = 6;
    QByteArray w = Work(22, 1);
    PutU16(w.data(), 16, 3);
    w.replace(18, 6, "000000");
    m.events.processPacketFromSocket_SrvClass(w.constData());
    QCOMPARE(m.shell.Messages.last().Text, LangText(393));
    QCOMPARE(m.table.Record(3).SrvClass, 6);
    w.replace(18, 6, "000042");
    m.events.processPacketFromSocket_SrvClass(w.constData());
    QCOMPARE(m.shell.Messages.last().Text, LangText(394) + u"000042"_s);
  }

  void wakeUpQueryAnswer() {
    Monitor m;
    QSignalSpy answered(&m.events, &TDeviceEvents::moringCallAnswered);
    QByteArray w = Work(35, 2);
    w.replace(18, 12, "202611230700");
    w[38] = 9; // out of range: counts as 1
    m.events.processPacketFromSocket_MoringCall(w.constData());
    QCOMPARE(answered.size(), 1);
    QCOMPARE(answered[0][0].toString(), u"202611230700"_s);
    QCOMPARE(answered[0][1].toInt(), 1);
    QVERIFY(m.net.CallTime.isEmpty()); // the answer is the dialog's, not the sender's
  }

  void noticesAndTheDoNotDisturbBatch() {
    Monitor m;
    QSignalSpy notice(&m.events, &TDeviceEvents::deviceNotice);
    int steps = 0;
    m.events.StepNoDisturbBatch = [&steps] { ++steps; };
    for (int sub : {137, 144, 145, 148, 152, 200})
      m.events.processPacketFromSocket_Other(Work(24, sub).constData());
    QCOMPARE(notice.size(), 3);
    QCOMPARE(steps, 0); // no batch runs
    m.net.MultiTask = true;
    m.events.processPacketFromSocket_Other(Work(24, 152).constData());
    QCOMPARE(steps, 1);
    m.events.processPacketFromSocket_VoiceMail(Work(40, 1).constData()); // never acts
  }
};

QTEST_GUILESS_MAIN(DeviceEventsTest)
#include "tst_deviceevents.moc"
