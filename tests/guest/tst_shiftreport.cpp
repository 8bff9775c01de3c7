// The shift report's sections from a prepared store, device table and clock:
// what falls inside the next twelve hours, after the last handover, what is
// still open and which missed calls nobody returned.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "devices/CallControlDev.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtGridModel.h"
#include "guest/ShiftReport.h"
#include "support/Settings.h"

#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;
using R = TShiftReportContent;

Q_DECLARE_METATYPE(TDateTime)

namespace {
TDateTime At(int day, int hour, int minute = 0) {
  return TDateTime::FromQDateTime(QDateTime(QDate(2027, 1, day), QTime(hour, minute)));
}
const TDateTime kNow = At(3, 20);
const TDateTime kLastReport = At(3, 8);

void Exec(const QString &sql) {
  QSqlQuery q(StoreConnection());
  QVERIFY2(q.exec(sql), qPrintable(sql));
}
} // namespace

class ShiftReportTest : public QObject {
  Q_OBJECT

  TestHome home;
  RecordingShell shell;
  TCallControlDev table;
  TExtGridModel grid;
  R report;

  TPhoneTis &Room(int id, const QString &roomNo) {
    TPhoneTis &p = *table.Device(id);
    p.ID = id;
    p.TelNos = QString::number(8000 + id);
    p.LastExt.RoomNo = roomNo;
    const int slot =
        grid.SlotCount() == 1 && grid.Cell(0, TExtGridModel::ColID).isEmpty() ? 0 : grid.AddSlot();
    grid.SetCell(slot, TExtGridModel::ColID, QString::number(id));
    return p;
  }

private slots:
  void initTestCase() {
    Sys_DM().DataModuleCreate();
    SysConfig().OutNo = u"9"_s; // the house's outside line
    Room(101, u"101"_s).MoringCallTime = At(4, 6, 30);
    Room(102, u"102"_s).MoringCallTime = At(4, 9); // beyond twelve hours
    TPhoneTis &daily = Room(103, u"103"_s);
    daily.LastExt.MoringCall_isEveryDay = true;
    daily.LastExt.MoringCall_EveryDay_Time = TDateTime::FromTime(QTime(7, 0));
    daily.LastExt.MoringCall_Mode = 2;
    daily.MoringCallTime = At(4, 7);                // the tick sent it on: the same wake-up
    Room(104, u"104"_s).MoringCallTime = At(3, 19); // already past

    Room(301, u"301"_s).NoDisturbMode = 1;
    TExt_Record &day = Room(302, u"302"_s).LastExt;
    day.NoDisturb_Time1_Checked = true;
    day.NoDisturb_Time1_Start = TDateTime::FromTime(QTime(13, 0));
    day.NoDisturb_Time1_End = TDateTime::FromTime(QTime(14, 0));
    TExt_Record &night = Room(303, u"<i>303"_s).LastExt;
    night.NoDisturb_Time2_Checked = true;
    night.NoDisturb_Time2_Start = TDateTime::FromTime(QTime(22, 0));
    night.NoDisturb_Time2_End = TDateTime::FromTime(QTime(6, 0));
    TExt_Record &unchecked = Room(304, u"304"_s).LastExt;
    unchecked.NoDisturb_Time3_Start = TDateTime::FromTime(QTime(1, 0));
    unchecked.NoDisturb_Time3_End = TDateTime::FromTime(QTime(2, 0));

    const auto wakeLog = [](const QString &room, TDateTime when, int state) {
      Exec(u"INSERT INTO MoringCallLog (RoomNo, Ext, CreateTime, MoringCallTime, State) "
           u"VALUES ('%1', '8%1', '%2', '%2', %3)"_s.arg(room, FormatFull(when))
               .arg(state));
    };
    wakeLog(u"201"_s, At(3, 7), 2);
    wakeLog(u"202"_s, At(3, 9), 2);
    wakeLog(u"203"_s, At(3, 10), 1);

    const auto task = [](const QString &title, const QString &deadline, int status) {
      Exec(u"INSERT INTO Task_Table (Title, Status, LastDateTime, contacters) "
           u"VALUES ('%1', %2, %3, '')"_s.arg(title)
               .arg(status)
               .arg(deadline));
    };
    task(u"overdue"_s, u"'2027-01-03 18:00:00'"_s, 0);
    task(u"ahead"_s, u"'2027-01-05 09:00:00'"_s, 0);
    task(u"done"_s, u"'2027-01-03 12:00:00'"_s, 1);
    task(u"undated"_s, u"NULL"_s, 0);

    const auto call = [](const QString &number, TDateTime when, int state) {
      Exec(u"INSERT INTO conRecords (TelNos, DateTime, State) VALUES ('%1', '%2', %3)"_s.arg(
          number, FormatFull(when), QString::number(state)));
    };
    call(u"13800000001"_s, At(3, 19), 1);
    call(u"13800000002"_s, At(3, 18), 1);
    call(u"13800000002"_s, At(3, 18, 30), 3);
    call(u"13800000003"_s, At(3, 18), 1);
    call(u"13800000003"_s, At(3, 18, 10), 2);
    call(u"13800000003"_s, At(3, 19, 30), 1);
    call(u"13800000004"_s, At(3, 18), 1);
    call(u"913800000004"_s, At(3, 18, 5), 3);
    call(u"?"_s, At(3, 19), 1);
    call(u"13800000005"_s, At(1, 12), 1); // before the window
    call(u"13800000006"_s, At(3, 9), 1);
    call(u"13800000006"_s, At(3, 10), 1);

    report = BuildShiftReport(table, grid, kNow, kLastReport);
  }

  // Each case: the section, a line's cells joined by "|", how often it stands there.
  void sections_data() {
    QTest::addColumn<int>("section");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("times");
    QTest::newRow("one-shot inside 12 h")
        << int(R::WakeUps) << u"2027-01-04 06:30|101|8101|单次|普通"_s << 1;
    QTest::newRow("one-shot beyond 12 h") << int(R::WakeUps) << u"|102|"_s << 0;
    QTest::newRow("daily, once though also held as one-shot")
        << int(R::WakeUps) << u"2027-01-04 07:00|103|8103|每天 07:00|中文"_s << 1;
    QTest::newRow("one-shot already past") << int(R::WakeUps) << u"|104|"_s << 0;
    QTest::newRow("failure before the last report") << int(R::FailedWakeUps) << u"|201|"_s << 0;
    QTest::newRow("failure after it")
        << int(R::FailedWakeUps) << u"2027-01-03 09:00|202|8202|2027-01-03 09:00"_s << 1;
    QTest::newRow("a wake-up that answered") << int(R::FailedWakeUps) << u"|203|"_s << 0;
    QTest::newRow("in do-not-disturb, no window")
        << int(R::NoDisturb) << u"301|8301|内外线免打扰|"_s << 1;
    QTest::newRow("a window") << int(R::NoDisturb) << u"302|8302|正常模式|13:00–14:00"_s << 1;
    QTest::newRow("a window over midnight, flagged")
        << int(R::NoDisturb) << u"<i>303|8303|正常模式|22:00–06:00 (跨零点, 不生效)"_s << 1;
    QTest::newRow("a window not checked") << int(R::NoDisturb) << u"304|"_s << 0;
    QTest::newRow("overdue task") << int(R::OpenTasks) << u"2027-01-03 18:00|overdue||已过期"_s
                                  << 1;
    QTest::newRow("task ahead") << int(R::OpenTasks) << u"2027-01-05 09:00|ahead||"_s << 1;
    QTest::newRow("done task") << int(R::OpenTasks) << u"|done|"_s << 0;
    QTest::newRow("task without deadline") << int(R::OpenTasks) << u"|undated|"_s << 0;
    QTest::newRow("missed, not called back")
        << int(R::MissedCalls) << u"2027-01-03 19:00|13800000001|1"_s << 1;
    QTest::newRow("missed, dialled back") << int(R::MissedCalls) << u"|13800000002|"_s << 0;
    QTest::newRow("answered, then missed again")
        << int(R::MissedCalls) << u"2027-01-03 19:30|13800000003|1"_s << 1;
    QTest::newRow("dialled back through the outside line")
        << int(R::MissedCalls) << u"|13800000004|"_s << 0;
    QTest::newRow("no number") << int(R::MissedCalls) << u"|?|"_s << 0;
    QTest::newRow("missed before the window") << int(R::MissedCalls) << u"|13800000005|"_s << 0;
    QTest::newRow("missed twice, before the last report still open")
        << int(R::MissedCalls) << u"2027-01-03 10:00|13800000006|2"_s << 1;
  }
  void sections() {
    QFETCH(int, section);
    QFETCH(QString, line);
    QFETCH(int, times);
    int found = 0;
    for (const TShiftReportRow &row : report.Sections[size_t(section)].Rows)
      found += QString(u'|' + row.Cells.join(u'|') + u'|').contains(line);
    QCOMPARE(found, times);
  }

  void notesAndText() {
    QCOMPARE(report.Sections[R::OpenTasks].Note, u"另有1项未定期限的事务。"_s);
    QCOMPARE(report.Sections[R::WakeUps].Rows.size(), 2);
    const QString html = report.Html();
    QVERIFY(html.contains(u"&lt;i&gt;303"_s));
    QVERIFY(!html.contains(u"<i>303"_s));
  }

  void sinceTheLastReport_data() {
    QTest::addColumn<TDateTime>("last");
    QTest::addColumn<TDateTime>("since");
    QTest::newRow("never") << TDateTime() << At(2, 20);
    QTest::newRow("this morning") << kLastReport << kLastReport;
    QTest::newRow("ahead of the clock") << At(4, 8) << At(2, 20);
  }
  void sinceTheLastReport() {
    QFETCH(TDateTime, last);
    QFETCH(TDateTime, since);
    QVERIFY(ShiftReportSince(kNow, last).SameAs(since));
  }
};

QTEST_GUILESS_MAIN(ShiftReportTest)
#include "tst_shiftreport.moc"
