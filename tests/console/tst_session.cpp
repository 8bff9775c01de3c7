// Login, keep-alive, re-login and log off, over a real connection to the
// simulated exchange. The pulse check is driven by calling its handler.
#include "common/LoginSteps.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
bool LogHas(const QString &text) {
  for (const QString &line : LogMemo().Lines())
    if (line.contains(text))
      return true;
  return false;
}

int LoginsReceived(const ExchangeSim &sim) {
  int n = 0;
  for (const SimPacket &p : sim.Received())
    n += p.TypeCode == 16 ? 1 : 0;
  return n;
}

struct Desk {
  TestHome home;
  RecordingShell shell;
  ExchangeSim sim;
  TMain_Form main;
  TLogin_Form login{&main};

  Desk() {
    home.UseChinese();
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};
    SysConfig().Debug = 1;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(50);
    if (!sim.Listen())
      qFatal("simulated exchange can't listen");
    main.AppTitle = u"Trunkdesk ver5.2"_s;
    main.Link().StartWorker();
    TypeLogin(login, sim.Port());
  }
  bool LoggedIn() {
    return QTest::qWaitFor([] { return SysParam().LoggedIn == 1 && SysParam().MyID != 65535; },
                           10000);
  }
};
} // namespace

class SessionTest : public QObject {
  Q_OBJECT

private slots:
  void loginOpensASession() {
    Desk d;
    d.login.ShowModal();
    d.login.Login_TeButtonClick();
    QVERIFY(!d.login.Visible()); // closed at once, before any answer
    QVERIFY(d.LoggedIn());
    QCOMPARE(int(SysParam().MyID), int(d.sim.SessionId()));
    QTRY_VERIFY(!d.sim.Received().isEmpty());
    const SimPacket first = d.sim.Received().first();
    QCOMPARE(first.TypeCode, qint16(16));
    QCOMPARE(first.ID, quint16(0));
    QCOMPARE(first.Fields.value(u"TelNo"_s).toString(), u"8001"_s);
    QCOMPARE(first.Fields.value(u"Password"_s).toString(), u"1234"_s);
    QCOMPARE(first.Fields.value(u"Version"_s).toString(), u"02"_s);
    // Right after the session opens the console asks for its extension's state.
    const auto askedForState = [&d] {
      const QList<SimPacket> received = d.sim.Received();
      return std::any_of(received.begin(), received.end(), [](const SimPacket &p) {
        return p.TypeCode == 20 && p.Fields.value(u"Code"_s).toInt() == 133;
      });
    };
    QTRY_VERIFY(askedForState());
    QVERIFY(d.main.PulseCheck_Timer.isActive());
    QCOMPARE(int(SysParam().Connected), 1);
    QVERIFY(LogHas(u"Connecting to IP:127.0.0.1"_s));
    QVERIFY(LogHas(u"Connected."_s));
    // The settings got the address and the number before connecting.
    QVERIFY(QString::fromUtf8(d.home.Read(u"ini/sys.ini"_s)).contains(u"userName=8001"_s));
  }

  void emptyNumberIsRefusedWithoutDisconnecting() {
    Desk d;
    d.login.TelNo_TeComboBox.clear();
    d.login.Login_TeButtonClick();
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Text, LangText(568));
    QVERIFY(d.shell.Balloons.isEmpty()); // no disconnect balloon
    QTest::qWait(50);
    QVERIFY(!d.sim.IsConnected());
  }

  void badPortTakesTheErrorPath() {
    Desk d;
    d.login.HostPort_TeMaskEdit = u"50x3"_s;
    d.login.Login_TeButtonClick();
    QCOMPARE(d.login.Logininfo_TeLabel, LangText(571));
    QCOMPARE(d.shell.Balloons.last().Title, LangText(572));
    QCOMPARE(d.shell.Balloons.last().Icon, BalloonIcon::Error);
    QCOMPARE(d.main.Front, TMain_Form::FrontPanel::Company_TePanel);
    QVERIFY(!d.login.LoginInfo_Timer.isActive());
  }

  void exchangeThatNeverAnswersLeavesNoSession() {
    Desk d;
    d.sim.SetAnswerLogin(false);
    d.login.Login_TeButtonClick();
    QTRY_COMPARE(LoginsReceived(d.sim), 1);
    QTest::qWait(100);
    QCOMPARE(int(SysParam().LoggedIn), 0);
    QCOMPARE(int(SysParam().MyID), 65535);
    QVERIFY(!d.main.PulseCheck_Timer.isActive());
  }

  void pulsesKeepTheSession() {
    Desk d;
    d.login.Login_TeButtonClick();
    QVERIFY(d.LoggedIn());
    for (int tick = 0; tick < 4; ++tick) {
      QTest::qWait(120); // two pulses or so between ticks
      d.main.PulseCheck_TimerTimer();
    }
    QVERIFY(!LogHas(u"No Pulse!!!"_s));
    QCOMPARE(LoginsReceived(d.sim), 1);
  }

  // No pulse for a whole period: the second tick ends the session and logs in
  // afresh, once; the timer comes back only with the new session.
  void lostPulsesBringAFreshLogin() {
    Desk d;
    d.login.Login_TeButtonClick();
    QVERIFY(d.LoggedIn());
    const quint16 first = SysParam().MyID;
    d.sim.StopPulses();
    QTest::qWait(100);
    d.main.PulseCheck_TimerTimer(); // clears the pulse of the login itself
    QVERIFY(!LogHas(u"No Pulse!!!"_s));
    SysParam().PulseSeen = 0;
    d.main.PulseCheck_TimerTimer();
    QVERIFY(LogHas(u"No Pulse!!!"_s));
    QCOMPARE(d.shell.Balloons.last().Title.isEmpty(), false);
    QVERIFY(std::any_of(d.shell.Balloons.begin(), d.shell.Balloons.end(),
                        [](const RecordingShell::BalloonShown &b) {
                          return b.Title == LangText(343) && b.Icon == BalloonIcon::Error;
                        }));
    d.sim.StartPulses();
    QTRY_COMPARE(LoginsReceived(d.sim), 2);
    QVERIFY(d.LoggedIn());
    QVERIFY(SysParam().MyID != first);
    QVERIFY(d.main.PulseCheck_Timer.isActive());
  }

  // A lost session is taken up again by the console alone, however long the
  // exchange stays away; meanwhile the desk shows that it is connecting and the
  // log has one line for the tries, not one per try.
  void lostSessionComesBackByItself_data() {
    QTest::addColumn<bool>("exchangeDown");
    QTest::newRow("link dropped") << false;
    QTest::newRow("exchange stopped and back on its port") << true;
  }
  void lostSessionComesBackByItself() {
    QFETCH(bool, exchangeDown);
    Desk d;
    d.main.ReloginFastInterval = 30;
    d.main.ReloginSlowInterval = 100;
    d.main.ReloginFastTries = 3;
    d.login.Login_TeButtonClick();
    QVERIFY(d.LoggedIn());
    QSignalSpy udp(&d.main, &TMain_Form::udpLoggedInChanged);
    const quint16 port = d.sim.Port();
    if (exchangeDown) {
      d.sim.Close();
      QTRY_VERIFY(d.main.ReloginTries() >= 6); // well into the slow tries
      QVERIFY(d.main.Reconnecting());
      QCOMPARE(d.main.SessionStateText(), LangText(575));
      QVERIFY(d.main.Display().Buffer1().startsWith(LangText(569).left(8)));
      QCOMPARE(udp.last()[0].toBool(), false);
      QVERIFY(d.shell.Messages.isEmpty()); // nobody need click anything
      QCOMPARE(LogMemo().Lines().filter(u"Logging in again to"_s).size(), 1);
      QVERIFY(d.sim.Listen(port));
    } else {
      d.sim.DropConnection();
      QTRY_VERIFY(LogHas(u"DisConnected!!!"_s));
    }
    QVERIFY(d.LoggedIn());
    QVERIFY(LoginsReceived(d.sim) >= 2);
    QVERIFY(!d.main.Reconnecting());
    QVERIFY(!d.main.Relogin_Timer.isActive());
    QVERIFY(d.main.PulseCheck_Timer.isActive());
    QCOMPARE(d.main.SessionStateText(), LangText(336));
  }

  void logOffStopsTheTries() {
    Desk d;
    d.main.ReloginFastInterval = 30;
    d.login.Login_TeButtonClick();
    QVERIFY(d.LoggedIn());
    const quint16 port = d.sim.Port();
    d.sim.Close();
    QTRY_VERIFY(d.main.ReloginTries() >= 2);
    d.main.TeSpeedButton11Click();
    QVERIFY(!d.main.Reconnecting());
    QVERIFY(d.sim.Listen(port));
    QTest::qWait(200);
    QVERIFY(!d.sim.IsConnected());
  }

  // A connect that can't come through is told, not waited on for ever; the
  // address of a missing [host] section is nobody's on most networks.
  void failedConnectIsTold_data() {
    QTest::addColumn<QString>("host");
    QTest::newRow("port closed") << u"127.0.0.1"_s;
    QTest::newRow("address nobody holds") << u"192.0.2.1"_s;
  }
  void failedConnectIsTold() {
    QFETCH(QString, host);
    Desk d;
    d.main.Link().Winsock_TCP().ConnectTimeoutMs = 300;
    d.login.HostIP_TeMaskEdit = host;
    const quint16 port = d.sim.Port();
    d.sim.Close();
    d.login.HostPort_TeMaskEdit = QString::number(port);
    d.login.Login_TeButtonClick();
    QTRY_COMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Kind, MessageKind::Error);
    QVERIFY(d.shell.Messages[0].Text.startsWith(LangText(571)));
    QVERIFY(d.shell.Messages[0].Text.contains(u"%1:%2"_s.arg(host).arg(port)));
    QVERIFY(d.main.Display().Buffer1().startsWith(LangText(571).left(8)));
    QCOMPARE(d.main.Front, TMain_Form::FrontPanel::Company_TePanel);
    QVERIFY(!d.main.Reconnecting()); // never logged in: nothing to take up again
  }

  void refusedThenReloginFromTheToolbar() {
    Desk d;
    d.sim.AddUser(u"8009"_s, u"x"_s, u"1001"_s);
    d.login.TelNo_TeComboBox = u"8009"_s;
    d.login.Pwd_TeMaskEdit = u"x"_s;
    d.login.Login_TeButtonClick();
    QTRY_COMPARE(d.main.Caption, LangText(307));
    QCOMPARE(int(SysParam().LoggedIn), 0);
    d.main.TeSpeedButton9Click();
    QVERIFY(d.login.Visible());
    QCOMPARE(d.login.LoginMode, 1u);
    QVERIFY(d.login.Pwd_TeMaskEdit.isEmpty());
    QCOMPARE(d.login.TeButton2_Caption, LangText(574));
    QCOMPARE(int(d.main.SilentExit), 0);
    d.login.TelNo_TeComboBox = u"8001"_s;
    d.login.Pwd_TeMaskEdit = u"1234"_s;
    d.login.EnterPressed();
    QVERIFY(d.LoggedIn());
    QCOMPARE(LoginsReceived(d.sim), 2);
  }

  void logOffKeepsTheLinkAndAsksForALogin() {
    Desk d;
    d.login.Login_TeButtonClick();
    QVERIFY(d.LoggedIn());
    d.main.TeSpeedButton11Click();
    QCOMPARE(int(d.main.SilentExit), 1);
    QCOMPARE(int(SysParam().LoggedIn), 0);
    QVERIFY(!d.main.PulseCheck_Timer.isActive());
    QVERIFY(d.login.Visible());
    QCOMPARE(d.login.LoginMode, 0u);
    QCOMPARE(d.login.TeButton2_Caption, LangText(573));
    QVERIFY(d.sim.IsConnected());
    QVERIFY(SysParam().MyID != 65535);
  }

  void leavingTheDialog_data() {
    QTest::addColumn<quint32>("mode");
    QTest::addColumn<bool>("quits");
    QTest::newRow("at start ends the program") << 0u << true;
    QTest::newRow("re-login only closes it") << 1u << false;
  }
  void leavingTheDialog() {
    QFETCH(quint32, mode);
    QFETCH(bool, quits);
    Desk d;
    QSignalSpy quit(&d.login, &TLogin_Form::quitRequested);
    d.login.LoginMode = mode;
    d.login.ShowModal();
    d.login.TeButton2Click();
    QVERIFY(!d.login.Visible());
    QCOMPARE(quit.size(), quits ? 1 : 0);
    QCOMPARE(int(d.main.SilentExit), quits ? 1 : 0);
  }

  void firstShowFillsFromTheSettingsAndResetRestoresTheHost() {
    Desk d;
    SysConfig().UserName = u"8123"_s;
    SysConfig().Host = u"10.0.0.1"_s;
    SysConfig().Port = u"5003"_s;
    SysConfig().RecPwdFlag = true;
    SysConfig().Password = u"pw"_s;
    TLogin_Form fresh(&d.main);
    fresh.FormShow();
    QCOMPARE(fresh.TelNo_TeComboBox, u"8123"_s);
    QCOMPARE(fresh.Pwd_TeMaskEdit, u"pw"_s);
    QVERIFY(fresh.recPwd_TeCheckBox);
    fresh.HostIP_TeMaskEdit = u"typo"_s;
    fresh.TeButton1Click();
    QCOMPARE(fresh.HostIP_TeMaskEdit, u"10.0.0.1"_s);
    d.main.Login_Form = &d.login;
  }
};

QTEST_GUILESS_MAIN(SessionTest)
#include "tst_session.moc"
