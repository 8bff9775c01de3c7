// The store on real SQLite files: the schema check at start, the paged query, the
// appends, the Jet dialect as the console writes it, and files that are no good.
#include "common/PgStore.h"
#include "common/RecordingShell.h"
#include "common/StoreFixture.h"
#include "common/TestHome.h"
#include "directory/JetSql.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QStringList Schema() {
  QSqlQuery q(StoreConnection());
  q.exec(u"SELECT name || ':' || sql FROM sqlite_master ORDER BY name"_s);
  QStringList out;
  while (q.next())
    out << q.value(0).toString();
  return out;
}

int Scalar(const QString &sql) {
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql) || !q.next())
    return -1;
  return q.value(0).toInt();
}

void Open(TADOQuery &query, const QString &sql) {
  Sys_DM().OpenSQL(sql, query);
}

QStringList Callers() {
  QSqlQuery q(StoreConnection());
  q.exec(u"select Caller from PBXConRecords order by ID"_s);
  QStringList out;
  while (q.next())
    out << q.value(0).toString();
  return out;
}

// Another program's connection to the store, holding its write lock while it lives.
class LockHolder {
public:
  explicit LockHolder(const QString &file) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"holder"_s);
    db.setDatabaseName(file);
    if (!db.open() || !QSqlQuery(db).exec(u"BEGIN EXCLUSIVE"_s))
      qFatal("the lock could not be taken");
  }
  ~LockHolder() { Release(); }
  void Release() {
    if (!QSqlDatabase::contains(u"holder"_s))
      return;
    QSqlQuery(QSqlDatabase::database(u"holder"_s)).exec(u"ROLLBACK"_s);
    QSqlDatabase::database(u"holder"_s).close();
    QSqlDatabase::removeDatabase(u"holder"_s);
  }
};

TPBXConRecord Record(int i) {
  return {0, u"c%1"_s.arg(i), u"8000"_s, 0, Now(), {}, {}, 0, {}, 1, 0};
}
} // namespace

class StoreTest : public QObject {
  Q_OBJECT

private slots:
  void cleanup() {
    // Leave no connection on a folder that goes away with the test.
    Sys_DM().mainADOQuery.Close();
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
  }

  void firstStartMakesTheWholeSchema() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    QCOMPARE(Sys_DM().FileName(), home.File(u"Database/Notes_DB.db"_s));
    for (const char *table :
         {"conRecords", "Task_Table", "Exts", "PBXConRecords", "MoringCallLog", "MainInfo"})
      QVERIFY2(Sys_DM().TableExists(QString::fromLatin1(table).toLower()), table);
    QCOMPARE(Scalar(u"select count(*) from Exts"_s), 3072);
    QCOMPARE(Scalar(u"select min(PortID) from Exts"_s), 0);
    QCOMPARE(Scalar(u"select max(PortID) from Exts"_s), 3071);
    QCOMPARE(Scalar(u"select count(*) from Exts where Ext is not null or RoomNo is not null"_s), 0);
    QCOMPARE(Scalar(u"select Version from TrunkdeskStore"_s), TSys_DM::kStoreVersion);
    for (const char *column :
         {"NoDisturb_Time1_Checked", "NoDisturb_Time2_Checked", "NoDisturb_Time3_Checked",
          "NoDisturb_Time1_Start", "NoDisturb_Time1_End", "NoDisturb_Time2_Start",
          "NoDisturb_Time2_End", "NoDisturb_Time3_Start", "NoDisturb_Time3_End",
          "MoringCall_isEveryDay", "MoringCall_EveryDay_Time", "MoringCall_Mode"})
      QVERIFY2(Sys_DM().FieldExists(u"Exts"_s, QString::fromLatin1(column)), column);
    for (const char *column : {"IDCard", "GrpName", "BranchTel", "E_Mail", "Memo"})
      QVERIFY2(Sys_DM().FieldExists(u"MainInfo"_s, QString::fromLatin1(column)), column);
  }

  // The always-false probes run their groups again; the first statement of each
  // fails quietly, and nothing changes or is logged.
  void secondStartChangesNothing() {
    TestHome home;
    SysConfig().Debug = 1;
    Sys_DM().DataModuleCreate();
    const QStringList before = Schema();
    LogMemo().Clear();
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    QCOMPARE(Schema(), before);
    QCOMPARE(Scalar(u"select count(*) from Exts"_s), 3072);
    QVERIFY(LogMemo().Lines().isEmpty());
    QVERIFY(shell.Messages.isEmpty());
  }

  void aGroupStopsAtItsFirstFailure() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    // An older file: Exts with only the first of the do-not-disturb columns.
    Sys_DM().Execute(u"drop table Exts"_s);
    Sys_DM().Execute(TSys_DM::Memo_SQL_Exts);
    Sys_DM().Execute(u"Alter Table Exts Add [NoDisturb_Time1_Checked] Bit"_s);
    Sys_DM().DBinit();
    QVERIFY(!Sys_DM().FieldExists(u"Exts"_s, u"NoDisturb_Time2_Checked"_s));
    QVERIFY(Sys_DM().FieldExists(u"Exts"_s, u"MoringCall_Mode"_s)); // other groups ran
  }

  // A store of an older console takes the front desk's columns at its first
  // start: every room keeps what it held and reads as vacant.
  void olderStoreTakesTheFrontDeskColumns() {
    TestHome home;
    SysConfig().Debug = 1;
    Sys_DM().DataModuleCreate();
    Sys_DM().Execute(u"drop table Exts"_s);
    Sys_DM().Execute(u"drop table RoomHistory"_s);
    Sys_DM().Execute(TSys_DM::Memo_SQL_Exts);
    Sys_DM().Execute(u"INSERT INTO Exts (portID, RoomNo, Memo) values(7, '301', 'it''s late')"_s);
    LogMemo().Clear();
    Sys_DM().DBinit();
    QVERIFY(Sys_DM().FieldExists(u"Exts"_s, u"GuestName"_s));
    QVERIFY(Sys_DM().FieldExists(u"Exts"_s, u"MoringCall_Mode"_s));
    QVERIFY(Sys_DM().TableExists(u"RoomHistory"_s));
    QCOMPARE(Scalar(u"select count(*) from Exts where portID=7 and RoomNo='301' and "
                    u"Memo='it''s late' and Occupied=0 and GuestName is null"_s),
             1);
    QVERIFY(LogMemo().Lines().join(u'\n').contains(u"upgraded for the front desk"_s));
  }

  void databaseFileSetting_data() {
    QTest::addColumn<bool>("exists");
    QTest::newRow("existing file is used") << true;
    QTest::newRow("missing file falls back quietly") << false;
  }
  void databaseFileSetting() {
    QFETCH(bool, exists);
    TestHome home;
    const QString mine = home.File(u"elsewhere/my.db"_s);
    if (exists)
      home.Write(u"elsewhere/my.db"_s, QByteArray());
    SysConfig().DBFile = mine;
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    QCOMPARE(Sys_DM().FileName(), exists ? mine : home.File(u"Database/Notes_DB.db"_s));
    QCOMPARE(SysConfig().DBFile, mine); // the setting stays as it was
    QVERIFY(shell.Messages.isEmpty());
  }

  void pageTexts() {
    QCOMPARE(TSys_DM::BuildPageSQL(50, 1, u"PBXConRecords"_s, u"1=1"_s),
             u"SELECT TOP 50 * FROM PBXConRecords WHERE (1=1) ORDER BY id desc"_s);
    QCOMPARE(
        TSys_DM::BuildPageSQL(50, 3, u"T"_s, u"(1=1) "_s),
        u"SELECT TOP 50 * FROM T WHERE ((1=1) ) and  (id NOT IN          (                "
        u"SELECT TOP 100 id FROM T where ((1=1) ) ORDER BY id desc           ) )ORDER BY id desc"_s);
  }

  void pagesComeNewestFirst_data() {
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("expectedRows");
    QTest::addColumn<int>("firstId");
    QTest::newRow("51 rows, page 1") << 51 << 1 << 50 << 51;
    QTest::newRow("51 rows, page 2") << 51 << 2 << 1 << 1;
    QTest::newRow("51 rows, page 3") << 51 << 3 << 0 << 0;
    QTest::newRow("empty, page 1") << 0 << 1 << 0 << 0;
  }
  void pagesComeNewestFirst() {
    QFETCH(int, rows);
    QFETCH(int, page);
    QFETCH(int, expectedRows);
    QFETCH(int, firstId);
    TestHome home;
    Sys_DM().DataModuleCreate();
    for (int i = 0; i < rows; ++i)
      Sys_DM().AddPBXConRecord({0, u"80%1"_s.arg(i), u"8000"_s, 0, Now(), Now(), {}, 0, {}, 1, 0});
    QCOMPARE(Sys_DM().GetRecordCount(u"PBXConRecords"_s, u"(1=1) "_s), rows);
    TADOQuery q;
    Open(q, TSys_DM::BuildPageSQL(50, page, u"PBXConRecords"_s, u"(1=1) "_s));
    QCOMPARE(q.RecordCount(), expectedRows);
    if (expectedRows)
      QCOMPARE(q.AsInteger(u"ID"_s), firstId);
  }

  void appendsLeaveWhatTheyDontSet() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    const TDateTime start = TDateTime::FromQDateTime(QDateTime(QDate(2026, 11, 22), QTime(9, 0)));
    Sys_DM().AddPBXConRecord(
        {7, u"8001"_s, u"13800138000"_s, 0, start, start + 1.0 / 24, {}, 2, u"8005"_s, 1, 3});
    TADOQuery q;
    Open(q, u"select * from PBXConRecords"_s);
    QCOMPARE(q.RecordCount(), 1);
    QCOMPARE(q.AsString(u"Called"_s), u"13800138000"_s);
    QCOMPARE(q.AsDateTime(u"stopTime"_s).ToQDateTime(),
             QDateTime(QDate(2026, 11, 22), QTime(10, 0)));
    QVERIFY(q.IsNull(u"connectTime"_s));
    QVERIFY(q.AsDateTime(u"connectTime"_s).IsZero());
    QCOMPARE(q.AsInteger(u"RecType"_s), 3);
    Sys_DM().AddMoringCallLog({0, u"301"_s, u"8301"_s, 0, start, start + 0.5, 1, 0});
    Open(q, u"select * from MoringCallLog"_s);
    QCOMPARE(q.AsString(u"RoomNo"_s), u"301"_s);
    QCOMPARE(q.AsString(u"MoringCallTime"_s), u"2026-11-22 21:00:00"_s);
  }

  // Every statement text the console builds runs as written against the schema.
  void everyStatementRuns_data() {
    QTest::addColumn<QString>("jet");
    const QString n = u"13800138000"_s;
    const QString now = u"2026-11-22 08:00:00"_s;
    auto row = [](const char *name, const QString &sql) { QTest::newRow(name) << sql; };
    row("exts", u"select * from Exts order by portID"_s);
    row("probe", u"select * from MainInfo where 1=2"_s);
    row("count",
        u"select count(*) as recordCount from PBXConRecords where (1=1)  and (startTime>=#2026-11-15 00::00::00#) "_s);
    row("page 2",
        TSys_DM::BuildPageSQL(
            50, 2, u"PBXConRecords"_s,
            u"(1=1)  and ( (Caller like '%80%' ) or (Called like '%80%') )  and (startTime<=#2026-11-22 23::59::59#) "_s));
    row("wake-up log",
        TSys_DM::BuildPageSQL(
            50, 1, u"MoringCallLog"_s,
            u"(1=1)  and (MoringCallTime>=#2026-11-22 00::00::00#)  and ( (Ext like '%%' )  )  and ( (RoomNo like '%3%' )  ) "_s));
    row("by name", u"select * from Maininfo where (name like '%O''Brien%') "_s);
    row("none", u"select * from maininfo where (1=2)"_s);
    row("by id", u"select * from maininfo where ID=5"_s);
    row("groups", u"SELECT DISTINCT GrpName FROM MainInfo order by GrpName"_s);
    row("dq string", u"select * from Maininfo where Name like \"%张%\""_s);
    row("company", u"select * from Maininfo where (company like '%x%') "_s);
    row("combined",
        u"select * from Maininfo where (1=1) and (Name like '%a%')and (Phone1 like '%1%')"_s);
    row("either", u"select * from Maininfo where (1<>1) or (Name like '%a%')"_s);
    row("short numbers",
        u"select * from maininfo where ( ( ( phone1 like '%%'&right('%1',7)&'%%' ) and ( len(phone1)<=6 ) ) or ( ( mobilePhone like '%%'&right('%1',7)&'%%' ) ) and ( len(mobilePhone)<=6 ) ) order by len(phone1)"_s
            .arg(n));
    row("long numbers",
        u"select * from maininfo where ( ( ( phone1 like '%%'&right('%1',7)&'%%' ) and ( len(phone1)>6 ) ) or ( ( mobilePhone like '%%'&right('%1',7)&'%%' ) ) and ( len(mobilePhone)>6 ) ) order by len(phone1)"_s
            .arg(n));
    row("last seven",
        u"select * from maininfo where (right(phone1,7)=right('%1',7)) or (right(mobilePhone,7)=right('%1',7)) "_s
            .arg(n));
    row("call log", u"select * from conRecords"_s);
    row("latest calls",
        u"SELECT top 100 ID, TelNos, DateTime, State FROM conRecords order by DateTime desc"_s);
    row("delete call", u"delete from conRecords where (ID=3)"_s);
    row("delete task", u"delete from Task_Table where ID=3"_s);
    row("new task",
        u"insert into Task_Table (title,contacters,context,creater,status,createDatetime,finishDatetime,lastDateTime) values('a''b','c','d','e',0,'%1','%1','%1') "_s
            .arg(now));
    row("max id", u"select max(ID) as maxID from Task_Table"_s);
    row("change task",
        u"update Task_Table set title='t',contacters='c',context='x',creater='me',status=1,createDatetime='%1',finishDatetime='%1',lastDateTime='%1' where (ID=1)"_s
            .arg(now));
    row("tasks", u"select * from Task_Table where (status=0 or status=1) order by lastDateTime"_s);
    row("due today",
        u"select count(*) as Taskcount from Task_Table where (dateDiff('d',lastDateTime,'%1')=0) and (status=0) "_s
            .arg(now));
    row("talk time",
        u"select *,format(cdate(connecttime-starttime),\"hh:mm:ss\") as 通话时长 from PBXConRecords where 1=1 and (connectTime>=#2026-11-22 08::00::00#)  and ((caller=\"8001\") or (called=\"8001\"))   and ((called like \"%%80%%\") or (caller like \"%%80%%\"))   order by connectTime desc  "_s);
  }
  void everyStatementRuns() {
    QFETCH(QString, jet);
    TestHome home;
    Sys_DM().DataModuleCreate();
    TADOQuery q;
    q.SQL = jet;
    try {
      if (jet.trimmed().startsWith(u"select"_s, Qt::CaseInsensitive))
        q.Open();
      else
        q.ExecSQL();
    } catch (const EDatabaseError &e) {
      QFAIL(qPrintable(e.Message() + u"\n  translated: "_s + TranslateJet(jet, Sys_DM().Target())));
    }
  }

  void jetFunctionsAnswerAsJetDoes_data() {
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");
    QTest::newRow("right") << u"right('13800138000',7)"_s << u"0138000"_s;
    QTest::newRow("right of short") << u"right('801',7)"_s << u"801"_s;
    QTest::newRow("len") << u"len('张三')"_s << u"2"_s;
    QTest::newRow("concatenation") << u"'a'&'b'&\"c\""_s << u"abc"_s;
    QTest::newRow("talk time")
        << u"format(cdate(#2026-11-22 10:02:03#-#2026-11-22 09:00:00#),\"hh:mm:ss\")"_s
        << u"01:02:03"_s;
    QTest::newRow("date literal") << u"#2026-11-22 6:05:00#"_s << u"2026-11-22 06:05:00"_s;
    QTest::newRow("escaped colons") << u"#2026-11-22 06::05::00#"_s << u"2026-11-22 06:05:00"_s;
    QTest::newRow("same day") << u"dateDiff('d','2026-11-22 23:00:00','2026-11-22 01:00:00')"_s
                              << u"0"_s;
    QTest::newRow("overdue") << u"dateDiff('d','2026-11-20 10:00:00','2026-11-22 09:00:00')"_s
                             << u"2"_s;
    QTest::newRow("later") << u"dateDiff('d','2026-11-23','2026-11-22 23:59:59')"_s << u"-1"_s;
    QTest::newRow("right, negative") << u"right('801',-2)"_s << u""_s;
    QTest::newRow("over a day")
        << u"format(cdate(#2026-11-23 10:02:03#-#2026-11-22 09:00:00#),\"h:nn:ss\")"_s
        << u"1:02:03"_s;
    QTest::newRow("hours") << u"dateDiff('h','2026-11-22 09:59:59','2026-11-22 10:00:00')"_s
                           << u"1"_s;
    QTest::newRow("months") << u"dateDiff('m','2026-11-30','2027-01-01')"_s << u"2"_s;
  }
  void jetFunctionsAnswerAsJetDoes() {
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    TestHome home;
    Sys_DM().DataModuleCreate();
    TADOQuery q;
    Open(q, u"select "_s + expression + u" as v from Exts where PortID=0"_s);
    QCOMPARE(q.AsString(u"v"_s), expected);
  }

  // A value with quotes and wildcard characters stays a value.
  void hostileTextIsStoredAndFoundAsText() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    const QString nasty = u"O'Brien \"50%\" #1 [x]; drop table MainInfo; --"_s;
    TADOQuery q;
    Open(q, u"select * from maininfo where (1=2)"_s);
    q.Append();
    q.SetString(u"Name"_s, nasty);
    q.Post();
    Open(q, u"select * from Maininfo where (name like '%"_s + SqlText(nasty) + u"%') "_s);
    QCOMPARE(q.RecordCount(), 1);
    QCOMPARE(q.AsString(u"Name"_s), nasty);
    Open(q, u"select * from Maininfo where Name like \"%"_s + SqlTextDq(nasty) + u"%\""_s);
    QCOMPARE(q.RecordCount(), 1);
    QVERIFY(Sys_DM().TableExists(u"MainInfo"_s));
  }

  void secondStatementIsRefused() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    Sys_DM().Execute(u"insert into conRecords (TelNos, State) values ('1', 1)"_s);
    QVERIFY_THROWS_EXCEPTION(EDatabaseError,
                             Sys_DM().Execute(u"select 1; delete from conRecords"_s));
    TADOQuery q;
    q.SQL = u"delete from conRecords where (ID=1); delete from Task_Table"_s;
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.ExecSQL());
    QCOMPARE(Scalar(u"select count(*) from conRecords"_s), 1);
    Sys_DM().Execute(
        u"insert into conRecords (TelNos, State) values ('a;b', 1);"_s); // a ; in text is text
  }

  void cursorWalksEditsAndFinds() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    TADOQuery q;
    Open(q, u"select * from conRecords where 1=2"_s);
    const TDateTime noon = TDateTime::FromQDateTime(QDateTime(QDate(2026, 11, 22), QTime(12, 0)));
    for (int i = 1; i <= 3; ++i) {
      q.Append();
      q.SetString(u"TelNos"_s, u"80%1"_s.arg(i));
      q.SetInteger(u"State"_s, i);
      q.SetDateTime(u"DateTime"_s, i == 3 ? noon.DatePart() : noon);
      q.Post();
      QCOMPARE(q.AsInteger(u"ID"_s), i); // the new row's number
    }
    Open(q, u"select * from conRecords order by ID"_s);
    QCOMPARE(q.RecordCount(), 3);
    q.Last();
    QCOMPARE(q.AsString(u"DateTime"_s), u"2026-11-22"_s); // midnight drops its time
    q.Prior();
    QCOMPARE(q.AsString(u"DateTime"_s), u"2026-11-22 12:00:00"_s);
    q.Prior();
    q.Prior();
    QVERIFY(q.Bof());
    QVERIFY(q.Locate(u"telnos"_s, u"802"_s));
    q.Edit();
    q.SetString(u"TelNos"_s, u"8099"_s);
    q.Post();
    q.Delete();
    QCOMPARE(q.RecordCount(), 2);
    QVERIFY(!q.Locate(u"TelNos"_s, u"8099"_s));
    Sys_DM().Execute(u"insert into conRecords (TelNos, State) values ('8100', 2)"_s);
    q.First();
    q.Refresh();
    QCOMPARE(q.RecordCount(), 3);
    QCOMPARE(q.AsString(u"TelNos"_s), u"801"_s); // stays on its row
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, q.AsString(u"NoSuchField"_s));
  }

  void fileThatIsNoDatabaseIsReportedClearly() {
    TestHome home;
    home.Write(u"Database/Notes_DB.db"_s, QByteArray(4096, 'x'));
    try {
      Sys_DM().DataModuleCreate();
      QFAIL("a file of garbage was taken for a database");
    } catch (const EDatabaseError &e) {
      QVERIFY2(e.Message().contains(u"Notes_DB.db"_s), qPrintable(e.Message()));
    }
    // The application-wide handler shows it and the console goes on.
    RecordingShell shell;
    RunGuarded([] { Sys_DM().DataModuleCreate(); });
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Kind, MessageKind::Error);
  }

  // A file of another program, or one a newer console set up: refused in
  // words, and not a byte of it changed (not even the journal mode).
  void aStoreThatIsNotOursIsLeftAlone_data() {
    QTest::addColumn<QString>("tables");
    QTest::addColumn<QString>("words");
    QTest::newRow("another program") << u"CREATE TABLE invoices (no integer)"_s
                                     << u"别的程序的表(invoices)"_s;
    QTest::newRow("newer console")
        << u"CREATE TABLE MainInfo (ID integer); CREATE TABLE TrunkdeskStore (Version integer); "
           u"INSERT INTO TrunkdeskStore VALUES (2)"_s
        << u"较新版本的控制台建立的"_s;
  }
  void aStoreThatIsNotOursIsLeftAlone() {
    QFETCH(QString, tables);
    QFETCH(QString, words);
    TestHome home;
    const QString file = home.File(u"Database/Notes_DB.db"_s);
    QDir().mkpath(QFileInfo(file).absolutePath());
    {
      QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"other_program"_s);
      db.setDatabaseName(file);
      QVERIFY(db.open());
      for (const QString &statement : tables.split(u"; "_s))
        QVERIFY(QSqlQuery(db).exec(statement));
    }
    QSqlDatabase::removeDatabase(u"other_program"_s);
    const QByteArray before = home.Read(u"Database/Notes_DB.db"_s);
    const QString error = StartError();
    QVERIFY2(error.contains(words), qPrintable(error));
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
    QCOMPARE(home.Read(u"Database/Notes_DB.db"_s), before);
  }

  // A file nobody may write (as a read-only copy on a share would be): the
  // operator is told which file and why, and the console goes on.
  void readOnlyFileIsReportedClearly() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    const QString file = Sys_DM().FileName();
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
    QFile::remove(file + u"-wal"_s);
    QFile::remove(file + u"-shm"_s);
    if (QProcess::execute(u"chattr"_s, {u"+i"_s, file}) != 0)
      QSKIP("files can't be made read-only for root here");
    RecordingShell shell;
    RunGuarded([] { Sys_DM().DataModuleCreate(); });
    QProcess::execute(u"chattr"_s, {u"-i"_s, file});
    QCOMPARE(shell.Messages.size(), 1);
    QVERIFY2(shell.Messages[0].Text.contains(u"Notes_DB.db"_s), qPrintable(shell.Messages[0].Text));
    QVERIFY2(shell.Messages[0].Text.contains(u"readonly"_s), qPrintable(shell.Messages[0].Text));
  }

  void fileLockedByAnotherProgram() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    const QString file = Sys_DM().FileName();
    // Another program takes the file and keeps it for two seconds.
    QProcess holder;
    holder.start(u"sqlite3"_s, {file});
    if (!holder.waitForStarted(3000))
      QSKIP("the sqlite3 program is not installed here");
    holder.write("BEGIN EXCLUSIVE; INSERT INTO conRecords (TelNos) values ('held');\n");
    QTest::qWait(500);
    QVERIFY_THROWS_EXCEPTION(
        EDatabaseError, Sys_DM().Execute(u"insert into conRecords (TelNos) values ('mine')"_s));
    holder.write("ROLLBACK;\n.quit\n");
    holder.waitForFinished(3000);
    Sys_DM().Execute(u"insert into conRecords (TelNos) values ('mine')"_s); // and then it works
  }

  // Records received while another program holds the store wait, in order, and
  // are written when it lets go; the operator hears of it once.
  void recordsWaitForALockedStore() {
    TestHome home;
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    QStringList sent;
    {
      LockHolder lock(Sys_DM().FileName());
      for (int i = 0; i < 40; ++i) {
        Sys_DM().AddPBXConRecord(Record(i));
        sent << u"c%1"_s.arg(i);
        if (i % 10 == 0)
          QTest::qWait(20); // several turns of the loop, each trying again
      }
      QCOMPARE(Sys_DM().PendingWrites().AppendNow({u"conRecords"_s, {u"TelNos"_s}, {u"8001"_s}}),
               -1);
      Sys_DM().AddMoringCallLog({0, u"301"_s, u"8301"_s, 0, Now(), Now(), 1, 0});
      QCOMPARE(Sys_DM().PendingWrites().Waiting(), 42);
      QCOMPARE(Scalar(u"select count(*) from PBXConRecords"_s), 0);
      QCOMPARE(shell.Messages.size(), 1);
    }
    QTRY_COMPARE(Sys_DM().PendingWrites().Waiting(), 0);
    QCOMPARE(Callers(), sent);
    QCOMPARE(Scalar(u"select count(*) from conRecords where TelNos='8001'"_s), 1);
    QCOMPARE(Scalar(u"select count(*) from MoringCallLog"_s), 1);
    QCOMPARE(shell.Messages.size(), 1);
  }

  // Past the memory bound records go to a file beside the store; what is there
  // at the next start is written then, before anything newer.
  void spilledRecordsSurviveARestart() {
    TestHome home;
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    const int total = TPendingWrites::kMemoryRows + 50;
    QStringList sent;
    {
      LockHolder lock(Sys_DM().FileName());
      for (int i = 0; i < total; ++i) {
        Sys_DM().AddPBXConRecord(Record(i));
        sent << u"c%1"_s.arg(i);
      }
      Sys_DM().PendingWrites().Flush();
      QVERIFY(QFile::exists(home.File(u"Database/Notes_DB.pending"_s)));
      QCOMPARE(Sys_DM().PendingWrites().Spilled(), total - TPendingWrites::kMemoryRows);
      Sys_DM().DataModuleCreate(); // the console closes and starts again
      QCOMPARE(Sys_DM().PendingWrites().Waiting(), total);
    }
    Sys_DM().AddPBXConRecord(Record(total));
    sent << u"c%1"_s.arg(total);
    QTRY_COMPARE_WITH_TIMEOUT(Sys_DM().PendingWrites().Waiting(), 0, 30000);
    QCOMPARE(Callers(), sent);
    QVERIFY(!QFile::exists(home.File(u"Database/Notes_DB.pending"_s)));
  }
};

QTEST_GUILESS_MAIN(StoreTest)
#include "tst_store.moc"
