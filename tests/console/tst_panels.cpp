// Panel actions and the exchange's notices about this console's calls.
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "guest/Hint_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/CallControlDev.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QStringList Sent() {
  QStringList out;
  for (const QByteArray &p : CapturedPackets) {
    const int type = GetI16(p.constData(), 6);
    if (type == 24)
      out << u"24:%1:%2"_s.arg(GetU16(p.constData(), 12)).arg(GetU16(p.constData(), 16));
    else if (type == 18)
      out << u"18"_s;
    else
      out << u"%1:%2"_s.arg(type).arg(GetU16(p.constData(), 12));
  }
  return out;
}

struct Desk {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;

  Desk() {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 3;
    SysParam().MyTelNo = u"8001"_s;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
  }
  ~Desk() { SetPacketOutlet(nullptr, nullptr); }
  void Device(int id, int type, const QString &number, int status = 1) {
    TPhoneTis &p = main.CallControlDev().Record(id);
    p.ID = id;
    p.DevType = type;
    p.TelNos = number;
    p.Status = status;
    main.CallControlDev().AddPanel(id);
  }
  void Notice(int sub, int state, const QByteArray &number, int at) {
    QByteArray w(2048, '\0');
    w[12] = char(sub);
    PutU16(w.data(), 18, quint16(state));
    w.replace(at, number.size(), number);
    main.DeviceNotice(sub, w);
  }
};
} // namespace

class PanelsTest : public QObject {
  Q_OBJECT

private slots:
  void popupMenuByDeviceType() {
    Desk d;
    d.Device(1, 1, u"8002"_s);
    d.Device(2, 5, u"1"_s);
    d.Device(3, 22, u"2"_s);
    d.Device(4, 6, u"3"_s);
    d.main.PhonePanel_PopupMenuPopup(1);
    QCOMPARE(d.main.PhonePanel_PopupMenu.test1_Caption, LangText(421));
    QVERIFY(d.main.PhonePanel_PopupMenu.N15_Visible);
    QVERIFY(!d.main.PhonePanel_PopupMenu.PopMenu_ResetTrunk_Visible);
    d.main.PhonePanel_PopupMenuPopup(3); // a SIP trunk keeps the extension's menu
    QCOMPARE(d.main.PhonePanel_PopupMenu.test1_Caption, LangText(421));
    QVERIFY(d.main.PhonePanel_PopupMenu.N15_Visible);
    d.main.PhonePanel_PopupMenuPopup(2);
    QCOMPARE(d.main.PhonePanel_PopupMenu.test1_Caption, LangText(422));
    QVERIFY(!d.main.PhonePanel_PopupMenu.N15_Visible);
    QVERIFY(d.main.PhonePanel_PopupMenu.PopMenu_ResetTrunk_Visible);
    d.main.PhonePanel_PopupMenuPopup(4);
    QVERIFY(!d.main.PhonePanel_PopupMenu.test1_Visible);
  }

  void callingAPanel() {
    Desk d;
    d.Device(1, 1, u"8002"_s, 1);
    d.Device(2, 1, u"8003"_s, 7);
    SysParam().CallState = 4;
    d.main.PhonePanel_PopupMenuPopup(1);
    d.main.test1Click();
    QCOMPARE(Sent(), QStringList{u"18"_s});
    d.main.PhonePanel_PopupMenuPopup(2); // busy: refused here, nothing asked
    d.main.test1Click();
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(d.shell.Balloons.last().Title, LangText(364));
    QCOMPARE(d.shell.Balloons.last().Icon, BalloonIcon::Warning);
  }

  void transferToAPanel_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("callState");
    QTest::addColumn<QStringList>("sent");
    QTest::newRow("busy target: balloon only") << 7 << 7 << QStringList{};
    QTest::newRow("connected: hold, transfer, dial")
        << 1 << 7 << QStringList{u"20:131"_s, u"20:130"_s, u"18"_s};
    QTest::newRow("dialling: transfer, dial") << 1 << 4 << QStringList{u"20:130"_s, u"18"_s};
    QTest::newRow("idle: nothing") << 1 << 1 << QStringList{};
  }
  void transferToAPanel() {
    QFETCH(int, status);
    QFETCH(int, callState);
    QFETCH(QStringList, sent);
    Desk d;
    d.Device(1, 1, u"8002"_s, status);
    SysParam().CallState = quint8(callState);
    d.main.PhonePanel_PopupMenuPopup(1);
    d.main.N15Click();
    QCOMPARE(Sent(), sent);
    if (status != 1)
      QCOMPARE(d.shell.Balloons.last().Title, LangText(418));
  }

  void transferToTheDialBox() {
    Desk d;
    SysParam().CallState = 4;
    d.main.dial_TeSComboBox_Text = u"   "_s;
    d.main.tefxSpeedButton2Click();
    QVERIFY(CapturedPackets.isEmpty());
    d.main.dial_TeSComboBox_Text = u"8005"_s;
    d.main.tefxSpeedButton2Click();
    QCOMPARE(Sent(), (QStringList{u"20:130"_s, u"18"_s}));
  }

  void controlCommands() {
    Desk d;
    d.Device(40, 5, u"1"_s);
    d.main.PhonePanel_PopupMenuPopup(40);
    d.main.PopMenu_ResetTrunkClick();
    d.main.tefxButton5Click();
    d.main.tefxButton6Click();
    QCOMPARE(Sent(), (QStringList{u"24:150:40"_s, u"24:149:1"_s, u"24:149:0"_s}));
    QCOMPARE(CapturedPackets[0].size(), 20);
    CapturedPackets.clear();
    d.main.ServiceAllowed = false; // the exchange bars it
    d.main.PopMenu_ResetTrunkClick();
    QVERIFY(CapturedPackets.isEmpty());
  }

  void phoneIconOpensTheServiceClassDialog() {
    Desk d;
    d.Device(40, 5, u"1"_s);
    d.Device(41, 22, u"2"_s);
    QSignalSpy dialog(&d.main, &TMain_Form::srvClassDialogRequested);
    d.main.Template_PhoneSpeedButtonClick(40); // a trunk: nothing
    QCOMPARE(dialog.size(), 0);
    d.main.Template_PhoneSpeedButtonClick(41); // a SIP trunk: the dialog
    QCOMPARE(dialog.size(), 1);
    QCOMPARE(d.main.CurrentDeviceID, 41);
    // At the panel the class dialog stands modal over the board, on that device.
    QCOMPARE(d.main.Hint_Form().Target, 41);
    QVERIFY(d.main.Hint_Form().Modal);
    QVERIFY(d.main.Hint_Form().TelNos_LMDLabel.endsWith(u":2"_s));
  }

  void findExtensionIsExactAndScrollsIntoView() {
    Desk d;
    d.main.CallControlDev().ParentWidth = 91;
    for (int id = 0; id < 20; ++id)
      d.Device(id, 1, u"80%1"_s.arg(id, 2, 10, QChar(u'0')));
    d.main.CallControlDev().Relayout();
    d.main.BoardGeometry.BoardHeight = 300;
    QCOMPARE(d.main.FindExtension(u"801"_s), -1); // "801" is not "8001"
    QCOMPARE(d.shell.Hints.last().Text, u"没找到:801，请重试！"_s);
    QCOMPARE(d.main.FindExtension(u"8019"_s), 19);
    QVERIFY(d.main.CallControlDev().ScreenTop(19) <= 300 - 20);
    QCOMPARE(d.shell.Hints.last().Text, u"找到分机:8019 ID:19"_s);
    QCOMPARE(d.shell.Hints.last().Ms, 5000);
  }

  void noticesAboutThisConsolesCalls() {
    Desk d;
    QSqlQuery q(StoreConnection());
    q.exec(u"INSERT INTO MainInfo (Name, Phone1, Company) VALUES ('丙', '8123', '丙公司')"_s);
    TDirectoryPages &p = d.main.Pages();
    d.Notice(137, 1, "8123", 20);
    QCOMPARE(p.Incomings_LMDListBox.Count(), 1);
    d.Notice(137, 1, "8001", 20); // the console's own number: ignored
    QCOMPARE(p.Incomings_LMDListBox.Count(), 1);
    d.Notice(137, 2, "8123", 20);
    QCOMPARE(p.Incomings_LMDListBox.Count(), 0);
    // Ringing notices whose end never comes: the list stops at what a screen
    // holds, newest first, and the status says how many went.
    for (int n = 0; n < TMain_Form::kMaxRingingNotices + 3; ++n)
      d.Notice(137, 1, QByteArray::number(9000 + n), 20);
    QCOMPARE(p.Incomings_LMDListBox.Count(), TMain_Form::kMaxRingingNotices);
    QCOMPARE(p.Incomings_LMDListBox.Item(0).Number,
             QString::number(9000 + TMain_Form::kMaxRingingNotices + 2));
    QCOMPARE(d.main.StatusLine, u"3 older ringing notices dropped"_s);
    p.Incomings_LMDListBox.Clear();

    d.Notice(144, 0, "8123", 18);
    QCOMPARE(p.lostIncom_LMDListBox.Count(), 1);
    QCOMPARE(d.shell.Balloons.last().Title, LangText(398));
    QCOMPARE(d.shell.Balloons.last().Text, LangFormat(395, {u"8123"_s, u"\r"_s}) +
                                               LangFormat(396, {u"丙"_s, u"\r"_s}) +
                                               LangFormat(397, {u"丙公司"_s, u"\r"_s}));
    d.Notice(145, 0, "", 20);
    QCOMPARE(p.Incomed_LMDListBox.Count(), 1);
    QCOMPARE(d.shell.Balloons.last().Title, LangText(416));
    QCOMPARE(d.main.StatusLine, LangText(417));
    d.Notice(145, 0, "8123", 20);
    QCOMPARE(d.main.StatusLine, u"8123 Connected"_s);
  }
};

QTEST_GUILESS_MAIN(PanelsTest)
#include "tst_panels.moc"
