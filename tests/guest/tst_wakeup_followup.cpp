// The front desk's follow-up of wake-ups: failed rings against the simulated
// exchange raise alarms that outlive a restart, retries when the house wants
// them, and the question before a wake-up goes into do-not-disturb.
#include "GuestDesk.h"
#include "RingingDesk.h"

#include "devices/DeviceEvents.h"
#include "devices/UDPServerMain.h"
#include "guest/WakeUpAlarms.h"

#include <QHostAddress>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {
const QDate kDay(2027, 1, 3);

// The console logged in to the exchange, with the house's follow-up on.
struct WakeDesk : RingingDesk {
  WakeDesk() : RingingDesk(2, QDateTime(kDay, QTime(6, 50))) { SysConfig().WakeFollowUp = 1; }
  TForm_WakeUpAlarms &Alarms() { return main.Form_WakeUpAlarms(); }
  qsizetype AlarmBalloons() const {
    return std::count_if(shell.Balloons.cbegin(), shell.Balloons.cend(),
                         [](const auto &b) { return b.Title == u"叫醒失败"_s; });
  }

  // The operator sets the room's wake-up in its dialog, once the exchange's
  // answer to the dialog's query has filled it.
  bool SetWakeUp(int id, QTime time) {
    TMoringCall_Form &f = main.MoringCall_Form();
    f.MoCall_Hour_TeSpinEdit = -1;
    main.OpenMoringCall(id);
    if (!QTest::qWaitFor([&] { return f.MoCall_Hour_TeSpinEdit >= 0; }, 10000))
      return false;
    f.MoCall_Flag_TeSComboBox_ItemIndex = 1;
    f.MoCallDate_TeDateTimePicker = TDateTime::FromDate(kDay);
    f.MoCall_Hour_TeSpinEdit = time.hour();
    f.MoCall_Minute_TeSpinEdit = time.minute();
    f.TeButton1Click();
    return !f.Visible();
  }
  // The exchange's clock moves on to `time`; it rings what is due, and the
  // console sees the ring end.
  bool RingAt(QTime time, bool answer) {
    sim.SetWakeUpResult(1, answer ? ExchangeSim::WakeUpResult::Answer
                                  : ExchangeSim::WakeUpResult::NoAnswer,
                        10);
    QSignalSpy ended(&sim, &ExchangeSim::wakeUpEnded);
    at = QDateTime(kDay, time);
    return QTest::qWaitFor([&] { return !ended.isEmpty(); }, 10000);
  }
  QStringList WakeUpsSent() const {
    QStringList sent;
    for (const SimPacket &p : sim.Received()) {
      if (p.TypeCode == 35 && p.Fields.value(u"Sub"_s).toInt() != 2)
        sent << p.Fields.value(u"CallTime"_s).toString().left(12);
    }
    return sent;
  }
};

QStringList Column(const QString &sql) {
  return GuestDesk::Column(sql);
}
} // namespace

class WakeUpFollowUpTest : public QObject {
  Q_OBJECT

private slots:
  // One failed ring: one alarm with one balloon and one ring, kept by the
  // store across a reopen, until the operator acknowledges it or the room
  // answers a later wake-up.
  void failedWakeUpAlarmsUntilCleared_data() {
    QTest::addColumn<QString>("clearedBy");
    QTest::newRow("acknowledged") << u"8001"_s;
    QTest::newRow("acknowledged with all") << u"all"_s;
    QTest::newRow("answered later") << u"answered"_s;
  }
  void failedWakeUpAlarmsUntilCleared() {
    QFETCH(QString, clearedBy);
    WakeDesk d;
    QVERIFY(d.Begin());
    QVERIFY(d.SetWakeUp(1, QTime(7, 0)));
    QVERIFY(d.RingAt(QTime(7, 0, 30), false));
    QTRY_COMPARE(d.Alarms().Count(), 1);
    QCOMPARE(d.AlarmBalloons(), 1);
    QCOMPARE(d.shell.RingOnces, 1);
    QCOMPARE(d.Alarms().Alarms().at(0).Ext, u"8002"_s);
    QCOMPARE(d.Alarms().StatusText(), u"叫醒失败: 1"_s);

    // A restart reads the store again.
    Sys_DM().DataModuleCreate();
    d.main.ExtsView().ExtsView_Init();
    QCOMPARE(d.Alarms().Count(), 1);

    if (clearedBy == u"answered"_s) {
      QVERIFY(d.SetWakeUp(1, QTime(7, 10)));
      QVERIFY(d.RingAt(QTime(7, 10, 30), true));
    } else if (clearedBy == u"all"_s) {
      d.Alarms().AcknowledgeAllClick();
    } else {
      d.Alarms().ItemIndex = 0;
      d.Alarms().AcknowledgeClick();
    }
    QTRY_COMPARE(d.Alarms().Count(), 0);
    QCOMPARE(d.shell.RingOnces, 1);
    QCOMPARE(Column(u"select AckBy from WakeUpAlarms"_s),
             QStringList{clearedBy == u"all"_s ? u"8001"_s : clearedBy});
    QCOMPARE(Column(u"select State || '/' || Attempt from MoringCallLog order by ID"_s),
             clearedBy == u"answered"_s ? (QStringList{u"2/1"_s, u"1/2"_s})
                                        : QStringList{u"2/1"_s});
    QCOMPARE(d.WakeUpsSent().size(), clearedBy == u"answered"_s ? 2 : 1); // no retries: off
  }

  // With retries on, each failure sets the room again N minutes on, up to K
  // times; the attempts run on in the log and the alarm.
  void retriesStopAtTheMost() {
    WakeDesk d;
    SysConfig().WakeRetry = 1;
    SysConfig().WakeRetryMinutes = 5;
    SysConfig().WakeRetryMax = 2;
    QVERIFY(d.Begin());
    QVERIFY(d.SetWakeUp(1, QTime(7, 0)));
    QVERIFY(d.RingAt(QTime(7, 0, 30), false));
    QTRY_COMPARE(d.WakeUpsSent().size(), 2);
    QVERIFY(d.RingAt(QTime(7, 6), false));
    QTRY_COMPARE(d.WakeUpsSent().size(), 3);
    QVERIFY(d.RingAt(QTime(7, 12), false));
    QTRY_COMPARE(d.Alarms().Alarms().value(0).Attempts, 3);
    QTest::qWait(50);
    QCOMPARE(d.WakeUpsSent(),
             (QStringList{u"202701030700"_s, u"202701030705"_s, u"202701030711"_s}));
    QCOMPARE(Column(u"select Attempt from MoringCallLog order by ID"_s),
             (QStringList{u"1"_s, u"2"_s, u"3"_s}));
    QCOMPARE(d.Alarms().Count(), 1);
    QCOMPARE(d.shell.RingOnces, 1);
    QCOMPARE(d.AlarmBalloons(), 3);
  }

  // A wake-up into a do-not-disturb window, or while the room's mode bars
  // calls, goes out only when the operator says so; a batch asks once.
  void conflictsAskFirst_data() {
    QTest::addColumn<QList<int>>("rooms"); // checked for a batch when more than one
    QTest::addColumn<QTime>("wakeUp");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QStringList>("named"); // numbers the question names; none: no question
    QTest::addColumn<int>("sent");
    QTest::newRow("inside the window, cancel")
        << QList<int>{1} << QTime(23, 0) << false << QStringList{u"8001"_s} << 0;
    QTest::newRow("inside the window, continue")
        << QList<int>{1} << QTime(23, 0) << true << QStringList{u"8001"_s} << 1;
    QTest::newRow("outside the window") << QList<int>{1} << QTime(7, 0) << false << QStringList{}
                                        << 1;
    QTest::newRow("mode bars calls") << QList<int>{2} << QTime(7, 0) << false
                                     << QStringList{u"8002"_s} << 0;
    QTest::newRow("batch, cancel") << QList<int>{1, 2, 3} << QTime(23, 0) << false
                                   << QStringList{u"8001"_s, u"8002"_s} << 0;
    QTest::newRow("batch, continue") << QList<int>{3, 1} << QTime(23, 0) << true
                                     << QStringList{u"8001"_s} << 1;
    QTest::newRow("follow-up off: as it always was")
        << QList<int>{1} << QTime(23, 0) << false << QStringList{} << 1;
  }
  void conflictsAskFirst() {
    QFETCH(QList<int>, rooms);
    QFETCH(QTime, wakeUp);
    QFETCH(bool, answer);
    QFETCH(QStringList, named);
    QFETCH(int, sent);
    GuestDesk d;
    SysConfig().WakeFollowUp = QByteArray(QTest::currentDataTag()).startsWith("follow-up off") ? 0 : 1;
    d.Report(1, "8001");
    d.Report(2, "8002", 0x0004); // calls from inside and outside barred
    d.Report(3, "8003");
    TExt_Record &l = d.table.Device(1)->LastExt;
    l.NoDisturb_Time1_Checked = true;
    l.NoDisturb_Time1_Start = TDateTime::FromTime(QTime(22, 0));
    l.NoDisturb_Time1_End = TDateTime::FromTime(QTime(23, 59));
    d.shell.Answer = answer;
    TMoringCall_Form &f = d.dialog;
    f.OpenFor(rooms.first());
    f.MoCall_Flag_TeSComboBox_ItemIndex = 1;
    f.MoCallDate_TeDateTimePicker = TDateTime::FromDate(kDay);
    f.MoCall_Hour_TeSpinEdit = wakeUp.hour();
    f.MoCall_Minute_TeSpinEdit = wakeUp.minute();
    CapturedPackets.clear();
    if (rooms.size() > 1) {
      for (int id : rooms)
        d.exts.AdvStringGrid_Exts.SetCheck(d.exts.AdvStringGrid_Exts.SlotOfId(id), u"TRUE"_s);
      f.TeButton_MoringCallSet_MultiClick();
    } else {
      f.TeButton1Click();
    }
    QCOMPARE(d.shell.Questions.size(), named.isEmpty() ? 0 : 1);
    for (const QString &number : named)
      QVERIFY2(d.shell.Questions.at(0).contains(number), qPrintable(d.shell.Questions.at(0)));
    if (!named.isEmpty() && rooms.size() > 1)
      QVERIFY(!d.shell.Questions.at(0).contains(u"8003"_s));
    QCOMPARE(CapturedPackets.size(), sent);
    QCOMPARE(f.Visible(), sent == 0);
  }

  // An older store takes the alarm table and the log's attempt column and
  // keeps its log rows.
  void oldStoreTakesTheAlarmTable() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    Sys_DM().Execute(u"DROP TABLE WakeUpAlarms"_s);
    Sys_DM().Execute(u"DROP TABLE MoringCallLog"_s);
    Sys_DM().Execute(TSys_DM::Memo_SQL_MoringCallLog);
    Sys_DM().Execute(u"INSERT INTO MoringCallLog (RoomNo, State) VALUES ('301', 2)"_s);
    Sys_DM().DataModuleCreate();
    QCOMPARE(Column(u"select RoomNo || '/' || State || '/' || ifnull(Attempt, '-') "
                    u"from MoringCallLog"_s),
             QStringList{u"301/2/-"_s});
    QCOMPARE(Column(u"select count(*) from WakeUpAlarms"_s), QStringList{u"0"_s});
  }

  // Retry settings typed by hand are brought into range.
  void retrySettingsFromTheFile_data() {
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QString>("read"); // on minutes most
    QTest::newRow("none") << QByteArray() << u"0 5 2"_s;
    QTest::newRow("set") << QByteArray("WakeRetry=1\nWakeRetryMinutes=10\nWakeRetryMax=3\n")
                         << u"1 10 3"_s;
    QTest::newRow("out of range") << QByteArray("WakeRetry=7\nWakeRetryMinutes=-4\nWakeRetryMax=99\n")
                                  << u"1 1 10"_s;
    QTest::newRow("not numbers") << QByteArray("WakeRetry=x\nWakeRetryMinutes=ten\n")
                                 << u"0 5 2"_s;
  }
  void retrySettingsFromTheFile() {
    QFETCH(QByteArray, section);
    QFETCH(QString, read);
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[FrontDesk]\n" + section);
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(u"%1 %2 %3"_s.arg(c.WakeRetry).arg(c.WakeRetryMinutes).arg(c.WakeRetryMax), read);
  }
};

QTEST_GUILESS_MAIN(WakeUpFollowUpTest)
#include "tst_wakeup_followup.moc"
