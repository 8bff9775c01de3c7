// Calls end to end: the console logged in to the simulated exchange over
// loopback, with the real store and call lists behind it.
#include "common/LoginSteps.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "link/SysParam.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Desk {
  TestHome home;
  RecordingShell shell;
  ExchangeSim sim;
  TMain_Form main;
  TLogin_Form login{&main};

  Desk() {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};
    SysConfig().IncomStyle = 1;
    SysConfig().OutNo = u"9"_s;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.SetDialCompleteAfter(0);
    sim.SetAnswerAfter(-1); // the test answers for the far end
    if (!sim.Listen())
      qFatal("simulated exchange can't listen");
    main.Link().StartWorker();
    main.Display().Timer2.start();
    TypeLogin(login, sim.Port());
    login.Login_TeButtonClick();
  }
  bool InState(int state) {
    return QTest::qWaitFor([state] { return SysParam().CallState == state; }, 10000);
  }
  int Logged(int kind) {
    QSqlQuery q(StoreConnection());
    q.exec(u"select count(*) from conRecords where State=%1"_s.arg(kind));
    return q.next() ? q.value(0).toInt() : -1;
  }
  QStringList Commands() const {
    QStringList out;
    for (const SimPacket &p : sim.Received()) {
      if (p.TypeCode == 20 || p.TypeCode == 24)
        out << u"%1:%2"_s.arg(p.TypeCode).arg(p.Fields.value(u"Code"_s).toInt());
      else if (p.TypeCode == 18)
        out << u"18:"_s + p.Fields.value(u"Digits"_s).toString();
    }
    return out;
  }
};
} // namespace

class CallsEndToEndTest : public QObject {
  Q_OBJECT

private slots:
  void unansweredCallLeavesAMissedCall() {
    Desk d;
    QVERIFY(d.InState(1));
    QVERIFY(d.sim.RingConsole(u"13900001111"_s));
    QVERIFY(d.InState(2));
    QCOMPARE(d.main.Display().Buffer1().left(11), u"13900001111"_s);
    QCOMPARE(d.main.Display().Buffer2(), TDisplay::BlankBuffer()); // blinking
    QTRY_COMPARE(d.shell.Balloons.last().Title, LangText(329));
    QVERIFY(d.shell.Ringing);
    QVERIFY(d.sim.GiveUpRinging(false));
    QVERIFY(d.InState(1));
    QVERIFY(!d.shell.Ringing);
    QCOMPARE(d.Logged(1), 1);
    QCOMPARE(d.main.Pages().lostIncom_LMDListBox.Count(), 1);
    QCOMPARE(d.main.Pages().lostIncom_LMDListBox.Item(0).Number, u"13900001111"_s);
    QCOMPARE(d.main.Pages().Incomings_LMDListBox.Count(), 0);
  }

  void answeredCallIsKindTwo() {
    Desk d;
    QVERIFY(d.InState(1));
    d.main.CtrlMode_tefxButtonClick();
    QVERIFY(d.sim.RingConsole(u"8002"_s));
    QVERIFY(d.InState(2));
    d.main.Offhook_tefxButtonClick(); // the handset goes off hook
    QVERIFY(d.InState(7));
    QCOMPARE(d.Logged(2), 1);
    QCOMPARE(d.main.Pages().Incomed_LMDListBox.Count(), 1);
  }

  // Dialled at idle, the number waits for the handset; off hook dials it.
  void dialledCallWaitsForTheHandsetAndIsKindThree() {
    Desk d;
    QVERIFY(d.InState(1));
    d.main.DialNumber(u"1380013"_s);
    QVERIFY(d.main.Msg_Panel_Visible);
    d.main.CtrlMode_tefxButtonClick();
    d.main.Offhook_tefxButtonClick();
    QVERIFY(d.InState(5)); // the exchange took the digits, with the outside line
    QVERIFY(d.Commands().contains(u"18:91380013"_s));
    QVERIFY(!d.main.Msg_Panel_Visible);
    QVERIFY(d.sim.AnswerByFarEnd());
    QVERIFY(d.InState(7));
    QCOMPARE(d.Logged(3), 1);
    QCOMPARE(d.main.Pages().dialOut_LMDListBox.Item(0).Number, u"91380013"_s);
  }

  void transferSendsHoldThenTransfer() {
    Desk d;
    QVERIFY(d.InState(1));
    d.main.CtrlMode_tefxButtonClick();
    QVERIFY(d.sim.RingConsole(u"8002"_s));
    QVERIFY(d.InState(2));
    d.main.Offhook_tefxButtonClick();
    QVERIFY(d.InState(7));
    d.sim.ClearReceived();
    d.main.TransferClick();
    QVERIFY(d.InState(1));
    QCOMPARE(d.Commands(), (QStringList{u"20:131"_s, u"20:130"_s}));
  }
};

QTEST_GUILESS_MAIN(CallsEndToEndTest)
#include "tst_calls_e2e.moc"
