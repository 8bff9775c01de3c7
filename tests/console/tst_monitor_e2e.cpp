// The device monitor end to end: a login enumerates the simulated exchange's
// devices, and its status datagrams keep the table true.
#include "common/LoginSteps.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "link/SysParam.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/GSM_Unit.h"
#include "devices/PhoneBoard.h"
#include "devices/UDPServerMain.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

class MonitorEndToEndTest : public QObject {
  Q_OBJECT

private slots:
  void loginEnumeratesAndDatagramsKeepTheTableTrue() {
    TestHome home;
    RecordingShell shell;
    home.CopyShipped(u"ini/lang_chinese.lan"_s);
    home.CopyShipped(u"ini/PhonePanels.xml"_s);
    LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_chinese.lan"_s));
    ReloadTypeNames();
    Sys_DM().DataModuleCreate();
    SysConfig().TypeVisible.fill(true);
    SysConfig().Host = u"127.0.0.1"_s;
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};

    TMain_Form main;
    TLogin_Form login(&main);
    main.CallControlDev().ParentWidth = 755;
    TUDPMainForm udp(0);
    TDeviceEvents &events = main.DeviceEvents();
    udp.DeviceStatusHandler = [&events](const char *r, int n) { events.Device_UpdateStatus(r, n); };
    udp.RefreshMixShow = [&events](int id, quint16 mix) { events.refreshMixShow(id, mix); };
    QVERIFY(udp.FormCreate());

    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.AddDevices(0, 8, 1, u"8001"_s);
    sim.AddDevice(50, 5, u"1"_s);
    sim.SetEventTarget(QHostAddress(u"127.0.0.1"_s), udp.LocalPort());
    QVERIFY(sim.Listen());
    main.Link().StartWorker();
    TypeLogin(login, sim.Port());
    login.Login_TeButtonClick();

    // The login answer loads the layout and refreshes: every device in order.
    QTRY_COMPARE_WITH_TIMEOUT(main.CallControlDev().PanelCount(), 9, 20000);
    QTRY_VERIFY(events.Timer_ExcuteAction.isActive());
    QCOMPARE(main.CallControlDev().Record(50).Panel.TelNosLabel, NameLine(5, u"1"_s));

    // The exchange reports a change: the panel follows.
    QVERIFY(sim.SetDeviceStatus(3, 7));
    sim.PushStatus(3);
    QTRY_COMPARE(main.CallControlDev().Record(3).Status, 7);
    QCOMPARE(main.CallControlDev().Record(3).Panel.Colour, main.CallControlDev().Colours[7]);
    QVERIFY(main.CallControlDev().Record(3).LiveUpdate);

    // The operator moves a panel; at close the layout is saved, and the next
    // start finds the same order.
    main.CallControlDev().MovePanel(50, 0);
    const std::vector<int> order = main.CallControlDev().Ordered();
    QCOMPARE(order.front(), 50);
    main.FormClose();
    TCallControlDev nextStart;
    nextStart.ParentWidth = 755;
    TNetModule net;
    TPhoneBoard board(nextStart, net);
    QVERIFY(board.LoadPhones_tefxButtonClick());
    QCOMPARE(nextStart.Ordered(), order);
    QCOMPARE(nextStart.Colours, main.CallControlDev().Colours);

    // A call record pushed by the exchange lands in the store.
    sim.SendCallRecord(u"8002"_s, u"13900001111"_s);
    QTRY_VERIFY([] {
      QSqlQuery q(StoreConnection());
      return q.exec(u"select count(*) from PBXConRecords"_s) && q.next() && q.value(0).toInt() == 1;
    }());
  }

  // An SMS goes to the exchange as its text block, and the answer shows.
  void smsGoesOutThroughAModule() {
    TestHome home;
    RecordingShell shell;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};

    TMain_Form main;
    TLogin_Form login(&main);
    TGSM_Form gsm;
    QObject::connect(&main, &TMain_Form::gsmSendRequested, &gsm, &TGSM_Form::sendSms_TeButtonClick);
    QObject::connect(&main, &TMain_Form::gsmTimerStopRequested, &gsm,
                     &TGSM_Form::GSM_SendSMS_TimerStop);
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.AddDevice(60, 12, u"13800000001"_s);
    QVERIFY(sim.Listen());
    main.Link().StartWorker();
    TypeLogin(login, sim.Port());
    login.Login_TeButtonClick();
    QTRY_VERIFY(SysParam().LoggedIn == 1);

    gsm.Show();
    gsm.SMSDest_TeSEdit = u"13900001111"_s;
    gsm.SMSBody_TeMemo = u"您的房间已准备好"_s;
    gsm.SMSBody_TeMemoChange();
    gsm.TeButton1Click();
    QTRY_COMPARE(sim.SmsSent().size(), 1);
    QVERIFY(sim.SmsSent()[0].startsWith(u"D:13900001111"_s));
    QVERIFY(sim.SmsSent()[0].contains(u"您的房间已准备好"_s));
    QTRY_VERIFY(std::any_of(shell.Balloons.begin(), shell.Balloons.end(),
                            [](const RecordingShell::BalloonShown &b) {
                              return b.Title == LangFormat(298, {u"13900001111"_s});
                            }));
    QCOMPARE(int(SysParam().GsmBusy), 0);
  }
};

QTEST_GUILESS_MAIN(MonitorEndToEndTest)
#include "tst_monitor_e2e.moc"
