// The record views on a real store: the page bar's count and keys, the call
// records' conditions and texts, the related search, the wake-up log, failures
// of the store mid-search, and the CSV export.
#include "common/RecordingShell.h"
#include "common/PgStore.h"
#include "common/TestHome.h"
#include "directory/SysDM_Unit.h"
#include "guest/MoringCallLog_Unit.h"
#include "guest/PBXRecords.h"
#include "guest/RecordExport.h"
#include "support/Clock.h"

#include <QFile>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
const QDateTime kNow(QDate(2027, 1, 3), QTime(12, 0));

void Exec(const QString &sql) {
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql))
    qFatal("%s", qPrintable(sql));
}

// n call records of today; the caller of record i (from 1) is caller(i).
void FillRecords(int n, const std::function<QString(int)> &caller = {}, int ioFlag = 1,
                 int recType = 0) {
  QSqlQuery q(StoreConnection());
  StoreConnection().transaction();
  q.prepare(u"INSERT INTO PBXConRecords (Caller, Called, startTime, IOFlag, RecType) "
            "VALUES (?, ?, '2027-01-03 10:00:00', ?, ?)"_s);
  for (int i = 1; i <= n; ++i) {
    q.addBindValue(caller ? caller(i) : u"80%1"_s.arg(i));
    q.addBindValue(u"0215550%1"_s.arg(i));
    q.addBindValue(ioFlag);
    q.addBindValue(recType);
    q.exec();
  }
  StoreConnection().commit();
}

struct Desk {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), SetClock([] { return kNow; }), true);
  bool storeOpen = (Sys_DM().DataModuleCreate(), true);
  TPBXRecords records;
  TFrame_DataPage &bar = records.Frame_DataPage;
  TRecordGridModel &grid = records.DBGridEh_PBXConRecords;
  ~Desk() {
    records.ADOQuery_PBXConRecords.Close();
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
  }
};
} // namespace

class RecordsTest : public QObject {
  Q_OBJECT

private slots:
  void pagesCount_data() {
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("pages");
    QTest::addColumn<int>("onLast");
    QTest::newRow("none") << 0 << 1 << 0;
    QTest::newRow("49") << 49 << 1 << 49;
    QTest::newRow("50: a second, empty page") << 50 << 2 << 0;
    QTest::newRow("51") << 51 << 2 << 1;
  }
  void pagesCount() {
    QFETCH(int, rows);
    QFETCH(int, pages);
    QFETCH(int, onLast);
    Desk d;
    FillRecords(rows);
    d.records.SpeedButton_FindClick();
    QCOMPARE(d.bar.Label_searchResult, u"共有记录%1条，共%2页"_s.arg(rows).arg(pages));
    QCOMPARE(d.bar.PageCount(), pages);
    QCOMPARE(d.grid.RowCount(), qMin(rows, 50));
    if (rows > 0)
      QCOMPARE(d.grid.Stored(0, u"Caller"_s), u"80%1"_s.arg(rows)); // newest first
    d.bar.Label7Click();
    QCOMPARE(d.grid.RowCount(), onLast);
    QVERIFY(d.shell.Messages.isEmpty());
  }

  void pageKeysStopAtTheEnds() {
    Desk d;
    FillRecords(120);
    d.records.SpeedButton_FindClick();
    QSignalSpy opened(&d.bar, &TFrame_DataPage::changed);
    const auto at = [&] { return d.grid.Stored(0, u"Caller"_s); };
    d.bar.Label5Click(); // before the first: nothing, not even a reload
    QCOMPARE(opened.count(), 0);
    d.bar.Label6Click();
    QCOMPARE(at(), u"8070"_s);
    // The boxes changed without a search don't steer the paging.
    d.records.Edit_PBXCon_TelNos = u"nobody"_s;
    d.bar.Label7Click();
    QCOMPARE(d.bar.ComboBox_PageIndex_ItemIndex, 2);
    QCOMPARE(d.grid.RowCount(), 20);
    opened.clear();
    d.bar.Label6Click(); // after the last: nothing
    QCOMPARE(opened.count(), 0);
    d.bar.Label7Click(); // the last again still reloads
    QCOMPARE(opened.count(), 1);
    d.bar.Label4Click();
    QCOMPARE(at(), u"80120"_s);
  }

  void shownTexts_data() {
    QTest::addColumn<int>("ioFlag");
    QTest::addColumn<int>("recType");
    QTest::addColumn<QString>("direction");
    QTest::addColumn<QString>("type");
    QTest::newRow("in, talked") << 0 << 0 << u"呼入"_s << u"0-正常通话"_s;
    QTest::newRow("out, forwarded") << 1 << 8 << u"呼出"_s << u"8-前转"_s;
    QTest::newRow("other direction, unknown type") << 2 << 9 << u"2"_s << u"?"_s;
    QTest::newRow("negative type") << 1 << -1 << u"呼出"_s << u"?"_s;
  }
  void shownTexts() {
    QFETCH(int, ioFlag);
    QFETCH(int, recType);
    Desk d;
    FillRecords(1, {}, ioFlag, recType);
    d.records.SpeedButton_FindClick();
    QFETCH(QString, direction);
    QFETCH(QString, type);
    QCOMPARE(d.grid.Shown(0, 3), direction);
    QCOMPARE(d.grid.Shown(0, 4), type);
  }

  void condition_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("dates");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("condition");
    const QString dates = u" and (startTime>=#2027-01-03 00::00::00#)  and "
                          "(startTime<=#2027-01-03 23::59::59#) "_s;
    QTest::newRow("either number, in part")
        << 0 << u"801"_s << true << 0
        << u"(1=1)  and ( (Caller like '%801%' ) or (Called like '%801%') ) "_s + dates;
    QTest::newRow("caller exactly, a type")
        << 1 << u"801"_s << true << 4
        << u"(1=1)  and ( (Caller = '801' )  ) "_s + dates + u" and (RecType=4) "_s;
    QTest::newRow("called exactly, no dates")
        << 2 << u"0215"_s << false << 0 << u"(1=1)  and ( (Called = '0215' )  ) "_s;
    QTest::newRow("a quote is searched for")
        << 0 << u"o'k"_s << false << 0
        << u"(1=1)  and ( (Caller like '%o''k%' ) or (Called like '%o''k%') ) "_s;
  }
  void condition() {
    QFETCH(int, mode);
    QFETCH(QString, text);
    QFETCH(bool, dates);
    QFETCH(int, type);
    Desk d;
    d.records.PBXFindMode = mode;
    d.records.Edit_PBXCon_TelNos = text;
    d.records.CheckBox_Start = d.records.CheckBox_End = dates;
    d.records.TeSComboBox_RecType_ItemIndex = type;
    QFETCH(QString, condition);
    QCOMPARE(d.records.PBX_BuildCondition(), condition);
  }

  // Whatever the operator types, the search runs and finds what holds it.
  void awkwardSearchText_data() {
    QTest::addColumn<QString>("caller");
    QTest::addColumn<QString>("typed");
    QTest::newRow("quotes") << u"8'0\"1"_s << u"'0\""_s;
    QTest::newRow("percent") << u"50%off"_s << u"0%o"_s;
    QTest::newRow("300 characters") << QString(300, u'7') << QString(300, u'7');
    QTest::newRow("Chinese and emoji") << u"前台☎️😀"_s << u"台☎️😀"_s;
    QTest::newRow("statement in the box") << u"x"_s << u"'); DROP TABLE PBXConRecords; --"_s;
  }
  void awkwardSearchText() {
    QFETCH(QString, caller);
    QFETCH(QString, typed);
    Desk d;
    FillRecords(3, [&](int i) { return i == 2 ? caller : u"900"_s; });
    d.records.Edit_PBXCon_TelNos = typed;
    d.records.SpeedButton_FindClick();
    QVERIFY(d.shell.Messages.isEmpty());
    const int expected = caller.contains(typed) || typed.contains(u'%') ? 1 : 0;
    QCOMPARE(d.bar.RecordCount, expected);
    QCOMPARE(d.grid.RowCount(), expected);
    d.records.Edit_PBXCon_TelNos.clear();
    d.records.SpeedButton_FindClick();
    QCOMPARE(d.bar.RecordCount, 3); // the table is still there
  }

  void endBeforeStartFindsNothing() {
    Desk d;
    FillRecords(5);
    d.records.DateTimePicker_End_Date = d.records.DateTimePicker_start_Date - 1;
    d.records.SpeedButton_FindClick();
    QCOMPARE(d.bar.Label_searchResult, u"共有记录0条，共1页"_s);
    QCOMPARE(d.grid.RowCount(), 0);
    QVERIFY(d.shell.Messages.isEmpty());
  }

  void relatedSearchThenPlainOne_data() {
    QTest::addColumn<bool>("byCaller");
    QTest::addColumn<QString>("number");
    QTest::newRow("caller (N24)") << true << u"801"_s;
    QTest::newRow("called (MenuItem8)") << false << u"0215550"_s;
  }
  void relatedSearchThenPlainOne() {
    QFETCH(bool, byCaller);
    QFETCH(QString, number);
    Desk d;
    // Numbers that hold the related one are no match for it, but are for the box.
    FillRecords(4, [](int i) { return i % 2 ? u"801"_s : u"8011"_s; });
    Exec(u"UPDATE PBXConRecords SET Called = CASE WHEN ID % 2 = 1 THEN '0215550' "
         "ELSE '02155501' END, RecType = ID"_s);
    d.records.TeSComboBox_RecType_ItemIndex = 3; // the related search clears it
    d.records.SpeedButton_FindClick();
    QCOMPARE(d.bar.RecordCount, 1);
    QCOMPARE(d.grid.Stored(0, byCaller ? u"Caller"_s : u"Called"_s), number);
    QSignalSpy boxes(&d.records, &TPBXRecords::boxesChanged);
    byCaller ? d.records.N24Click() : d.records.MenuItem8Click();
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(d.records.Edit_PBXCon_TelNos, number);
    QCOMPARE(d.records.TeSComboBox_RecType_ItemIndex, 0);
    QCOMPARE(d.bar.RecordCount, 2);
    QCOMPARE(d.records.PBXFindMode, int(TPBXRecords::FindEither));
    d.records.SpeedButton_FindClick(); // by part again
    QCOMPARE(d.bar.RecordCount, 4);
  }

  // A store from an older console has only the index on startTime. Its first
  // start here builds the record index; the pages show the same rows in the
  // same order before and after, newest start first, arrival breaking ties, a
  // late record at its own time, and no row on two pages or on none.
  void olderStoreGetsTheRecordIndex() {
    Desk d;
    Exec(u"DROP INDEX PBXConRecords_Pages"_s);
    Exec(u"CREATE INDEX PBXConRecords_startTime ON PBXConRecords (startTime)"_s);
    // Three calls a minute from 10:00, every seventh record late by four minutes.
    QList<std::pair<int, int>> expected; // (minute, arrival)
    StoreConnection().transaction();
    for (int i = 0; i < 130; ++i) {
      const int minute = qMax(0, i / 3 - (i % 7 == 3 ? 4 : 0));
      expected.append({minute, i});
      Exec(u"INSERT INTO PBXConRecords (Caller, Called, startTime, IOFlag, RecType) VALUES "
           "('%1', '021', '2027-01-03 %2:%3:00', 1, 0)"_s.arg(i)
               .arg(10 + minute / 60)
               .arg(minute % 60, 2, 10, QChar(u'0')));
    }
    StoreConnection().commit();
    std::sort(expected.begin(), expected.end(), std::greater<>());
    QStringList newestFirst;
    for (const auto &[minute, arrival] : expected)
      newestFirst << QString::number(arrival);
    const auto pages = [&] {
      QStringList shown;
      d.records.SpeedButton_FindClick();
      for (int page = 0; page < d.bar.PageCount(); ++page) {
        d.bar.SelectPage(page);
        for (int row = 0; row < d.grid.RowCount(); ++row)
          shown << d.grid.Stored(row, u"Caller"_s);
      }
      return shown;
    };
    QCOMPARE(pages(), newestFirst);

    d.records.ADOQuery_PBXConRecords.Close();
    if (TestStoreIsPg())
      QSKIP("A shared store has had the one index from its start");
    Sys_DM().DataModuleCreate();
    QSqlQuery q(StoreConnection());
    q.exec(u"SELECT group_concat(name) FROM sqlite_master WHERE tbl_name = 'PBXConRecords' "
           "AND type = 'index'"_s);
    QVERIFY(q.next());
    QCOMPARE(q.value(0).toString(), u"PBXConRecords_Pages"_s);
    QCOMPARE(pages(), newestFirst);
  }

  // A store that fails under the page: the operator is told, the grid is
  // empty, and the bar counts nothing rather than what it counted before.
  void storeFailsMidSearch_data() {
    QTest::addColumn<bool>("onPaging");
    QTest::newRow("the count fails") << false;
    QTest::newRow("a page fails") << true;
  }
  void storeFailsMidSearch() {
    QFETCH(bool, onPaging);
    Desk d;
    FillRecords(120);
    d.records.SpeedButton_FindClick();
    Exec(u"ALTER TABLE PBXConRecords RENAME TO Gone"_s);
    onPaging ? d.bar.Label6Click() : d.records.SpeedButton_FindClick();
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Kind, MessageKind::Error);
    QCOMPARE(d.grid.RowCount(), 0);
    QCOMPARE(d.bar.Label_searchResult, u"共有记录0条，共1页"_s);
    QCOMPARE(d.bar.ComboBox_PageIndex_Items, QStringList{u"1"_s});
    Exec(u"ALTER TABLE Gone RENAME TO PBXConRecords"_s);
    d.bar.Label4Click(); // the stored search works again
    QCOMPARE(d.grid.RowCount(), 50);
  }

  void moringCallLog() {
    Desk d;
    const auto add = [](const char *room, const char *ext, const char *time, int state) {
      Exec(u"INSERT INTO MoringCallLog (RoomNo, Ext, CreateTime, MoringCallTime, State) VALUES "
           "('%1', '%2', '2026-12-01 00:00:00', '%3', %4)"_s.arg(QLatin1StringView(room),
                                                                 QLatin1StringView(ext),
                                                                 QLatin1StringView(time))
               .arg(state));
    };
    add("312", "8312", "2027-01-02 07:00:00", 1);
    add("405", "8405", "2027-01-03 06:30:00", 2);
    add("405", "8405", "2027-01-05 06:30:00", 1); // after the end box: still found
    add("405", "8405", "2026-12-20 06:30:00", 1); // before the start box: not
    TForm_MoringCallLog log;
    QCOMPARE(log.MoringCallLog_BuildCondition(),
             u"(1=1)  and (MoringCallTime>=#2026-12-27 12::00::00#)  and ( (Ext like '%%' )  ) "
             " and ( (RoomNo like '%%' )  ) "_s);
    log.ShowForExt(u"840"_s);
    QVERIFY(log.Visible());
    QCOMPARE(log.Frame_DataPage.RecordCount, 2);
    TRecordGridModel &g = log.cxGrid_MoringCallLog;
    QCOMPARE(g.Shown(0, 3), u"2027-01-05 06:30:00"_s);
    QCOMPARE(g.Shown(1, 4), u"叫醒失败"_s);
    QCOMPARE(g.data(g.index(1, 4), TRecordGridModel::IconRole).toString(), u"not-woken"_s);
    log.cxComboBox_State_ItemIndex = 1;
    log.cxTextEdit_Ext.clear();
    log.cxDateEdit_End = log.cxDateEdit_Start - 30; // has no effect
    log.SpeedButton_FindClick();
    QCOMPARE(log.Frame_DataPage.RecordCount, 2);
    QCOMPARE(g.Shown(1, 4), u"叫醒成功"_s);
    log.ADOQuery_MoringCallLog.Close();
  }

  void exportWritesAllPages() {
    Desk d;
    FillRecords(120, [](int i) { return i == 7 ? u"=HYPERLINK(\"x\")"_s : u"+861380%1"_s.arg(i); },
                2, 9);
    d.records.SpeedButton_FindClick();
    d.bar.Label6Click(); // on page 2: the export still holds every page
    d.shell.FileToSave = d.home.File(u"out.csv"_s);
    d.records.ExportClick();
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Kind, MessageKind::Information);
    const QByteArray csv = d.home.Read(u"out.csv"_s);
    QVERIFY(csv.startsWith("\xEF\xBB\xBF分机号,呼叫号码,时间,呼叫方向,通话类型\r\n"));
    const QList<QByteArray> lines = csv.split('\n');
    QCOMPARE(lines.size(), 1 + 120 + 1);
    QCOMPARE(lines[1], QByteArray("+861380120,0215550120,2027-01-03 10:00:00,2,?\r"));
    QVERIFY(csv.contains("\"'=HYPERLINK(\"\"x\"\")\",02155507,"));
  }

  void exportToAFolderThatCantBeWritten() {
    Desk d;
    FillRecords(3);
    d.records.SpeedButton_FindClick();
    d.home.Write(u"plain-file"_s, "not a folder");
    d.shell.FileToSave = d.home.File(u"plain-file/out.csv"_s);
    d.records.ExportClick();
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Kind, MessageKind::Error);
    QVERIFY(d.shell.Messages[0].Text.startsWith(u"错误提示:"_s));
    QCOMPARE(d.home.Read(u"plain-file"_s), QByteArray("not a folder"));
    // A cancelled chooser writes nothing and says nothing.
    d.shell.FileToSave.clear();
    d.records.ExportClick();
    QCOMPARE(d.shell.Messages.size(), 1);
  }
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
