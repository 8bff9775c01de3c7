// Several desks on one PostgreSQL store: a pushed call record stored once, the
// server going away and coming back mid-shift, the start's refusals in words,
// other desks' changes arriving, and two saves of one contact. "Another desk"
// is a second connection of this process, written past the console's code.
#include "common/PgStore.h"
#include "common/RecordingShell.h"
#include "common/StoreFixture.h"
#include "common/TestHome.h"
#include "directory/DirectoryPages.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "support/Log.h"

#include <QSignalSpy>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// The other desk: its own connection to the same database.
QSqlDatabase OtherDesk(const QString &user = {}, const QString &password = {}) {
  const QString name = u"other_desk"_s;
  if (QSqlDatabase::contains(name))
    QSqlDatabase::removeDatabase(name);
  PgServer &server = *pgstore_detail::Server();
  QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, name);
  db.setHostName(server.Host());
  db.setPort(server.Port());
  db.setDatabaseName(server.Database());
  db.setUserName(user.isEmpty() ? server.User() : user);
  db.setPassword(password);
  if (!db.open())
    qFatal("other desk: %s", qPrintable(db.lastError().text()));
  return db;
}

bool Run(QSqlDatabase db, const QString &sql) {
  QSqlQuery q(db);
  if (!q.exec(sql))
    qWarning("%s: %s", qPrintable(sql), qPrintable(q.lastError().text()));
  return q.isActive();
}

int Count(QSqlDatabase db, const QString &sql) {
  QSqlQuery q(db);
  return q.exec(sql) && q.next() ? q.value(0).toInt() : -1;
}

QStringList Tables(QSqlDatabase db) {
  QStringList tables = db.tables();
  tables.sort();
  return tables;
}

const QString kInsertRecord =
    u"INSERT INTO PBXConRecords (Caller, Called, assPhone, startTime, stopTime, IOFlag, RecType, "
    u"assType) VALUES ('8001', '8002', %1, '2026-11-23 10:00:00', '2026-11-23 10:01:00', 1, 0, "
    u"%2)"_s;

TPBXConRecord Record(const QString &assPhone = {}, int assType = 0) {
  TPBXConRecord r;
  r.Caller = u"8001"_s;
  r.Called = u"8002"_s;
  r.startTime = TDateTime::FromQDateTime(QDateTime(QDate(2026, 11, 23), QTime(10, 0)));
  r.stopTime = TDateTime::FromQDateTime(QDateTime(QDate(2026, 11, 23), QTime(10, 1)));
  r.IOFlag = 1;
  r.assPhone = assPhone;
  r.assType = assType;
  return r;
}
} // namespace

class SharedStoreTest : public QObject {
  Q_OBJECT

private slots:
  void initTestCase() { TestHome::AfterReset() = pgstore_detail::PointAtServer; }

  // Two desks append the same pushed record, each stamped on arrival by its
  // own clock: one row, also when the stamps fall in two seconds. A transfer
  // of the same call (another assPhone), or the same numbers a while later,
  // is a record of its own. A store that two desks shared before the rule
  // has its second copies removed at the upgrade.
  void pushedRecordStoredOnce() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    QSqlDatabase other = OtherDesk();
    QVERIFY(Run(other, kInsertRecord.arg(u"NULL"_s, u"0"_s)));
    Sys_DM().AddPBXConRecord(Record());
    TPBXConRecord nextSecond = Record();
    nextSecond.startTime = nextSecond.startTime + 2.0 / 86400;
    Sys_DM().AddPBXConRecord(nextSecond);
    TPBXConRecord later = Record();
    later.startTime = later.startTime + 10.0 / 86400;
    Sys_DM().AddPBXConRecord(later);
    Sys_DM().AddPBXConRecord(Record(u"8003"_s, 2));
    Sys_DM().AddPBXConRecord(Record(u"8003"_s, 2));
    QVERIFY(Sys_DM().PendingWrites().Flush());
    QCOMPARE(Count(other, u"SELECT count(*) FROM PBXConRecords"_s), 3);
    QVERIFY(Run(other, u"DELETE FROM PBXConRecords WHERE startTime > '2026-11-23 10:00:05'"_s));

    QVERIFY(Run(other, u"ALTER TABLE PBXConRecords DROP CONSTRAINT PBXConRecords_Once"_s));
    for (int i = 0; i < 3; ++i)
      QVERIFY(Run(other, kInsertRecord.arg(u"NULL"_s, u"0"_s)));
    SysConfig().Debug = 1;
    LogMemo().Clear();
    Sys_DM().DataModuleCreate();
    QCOMPARE(LogMemo().Lines().filter(u"3 second copies removed"_s).size(), 1);
    QCOMPARE(Count(other, u"SELECT count(*) FROM PBXConRecords"_s), 2);
    QCOMPARE(Count(other, u"SELECT min(ID) FROM PBXConRecords WHERE assPhone IS NULL"_s), 1);
    QVERIFY(!QSqlQuery(other).exec(kInsertRecord.arg(u"NULL"_s, u"0"_s)));
  }

  // Mid-shift the server stops: one message, the operations that need it
  // end quietly, the records that arrive wait in the spill file; it comes
  // back and the desk reconnects by itself and writes them, none twice.
  void serverAwayAndBack() {
    TestHome home;
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    PgServer &server = *pgstore_detail::Server();
    QVERIFY(server.Stop());
    for (int i = 0; i < 3; ++i)
      Sys_DM().AddPBXConRecord(Record(QString::number(i)));
    QTRY_VERIFY(Sys_DM().Link().Away());
    for (int i = 0; i < 2; ++i) {
      TADOQuery q;
      q.SQL = u"select * from MainInfo"_s;
      QVERIFY_THROWS_EXCEPTION(EStoreAway, q.Open());
    }
    RunGuarded([] { throw EStoreAway(u"away"_s); });
    QCOMPARE(shell.Messages.size(), 1);
    QVERIFY(shell.Messages[0].Text.contains(u"自动重新连接"_s));
    Sys_DM().AddPBXConRecord(Record(u"3"_s));
    QTRY_COMPARE(Sys_DM().PendingWrites().Spilled(), 4);

    QVERIFY(server.Start());
    QTRY_VERIFY_WITH_TIMEOUT(!Sys_DM().Link().Away(), 60000);
    QTRY_COMPARE(Sys_DM().PendingWrites().Waiting(), 0);
    QCOMPARE(Count(OtherDesk(), u"SELECT count(*) FROM PBXConRecords"_s), 4);
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Balloons.size(), 1);
    TADOQuery q;
    q.SQL = u"select * from PBXConRecords"_s;
    q.Open();
    QCOMPARE(q.RecordCount(), 4);
  }

  // What the start says when the server or the database can't be used, and
  // that a database it must not write is left as it was.
  void startRefusals_data() {
    QTest::addColumn<QString>("prepare");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("database");
    QTest::addColumn<QString>("words");
    QTest::newRow("wrong password")
        << QString() << u"trunkdesk_pw"_s << QString() << u"拒绝了用户名或密码"_s;
    QTest::newRow("no such database")
        << QString() << QString() << u"nowhere"_s << u"上没有这个数据库"_s;
    QTest::newRow("another program's database")
        << u"CREATE TABLE invoices (no integer)"_s << QString() << QString()
        << u"里是别的程序的表(invoices)"_s;
    QTest::newRow("newer console")
        << u"CREATE TABLE MainInfo (ID integer); CREATE TABLE TrunkdeskStore (Version integer); "
           u"INSERT INTO TrunkdeskStore VALUES (2)"_s
        << QString() << QString() << u"较新版本的控制台建立的(结构 2"_s;
  }
  void startRefusals() {
    QFETCH(QString, prepare);
    QFETCH(QString, user);
    QFETCH(QString, database);
    QFETCH(QString, words);
    TestHome home;
    QSqlDatabase other = OtherDesk();
    QVERIFY(Run(other, u"DROP ROLE IF EXISTS trunkdesk_pw"_s));
    QVERIFY(Run(other, u"CREATE ROLE trunkdesk_pw LOGIN PASSWORD 'right'"_s));
    for (const QString &statement : prepare.split(u"; "_s, Qt::SkipEmptyParts))
      QVERIFY(Run(other, statement));
    const QStringList before = Tables(other);
    if (!user.isEmpty()) {
      SysConfig().DBUser = user;
      SysConfig().DBPassword = u"wrong"_s;
    }
    if (!database.isEmpty())
      SysConfig().DBDatabase = database;
    const QString error = StartError();
    QVERIFY2(error.contains(words), qPrintable(error));
    QVERIFY(!Sys_DM().Connected());
    QVERIFY(!Sys_DM().Link().Away()); // no use trying again by itself
    QCOMPARE(Tables(other), before);
    QCOMPARE(Count(other, u"SELECT count(*) FROM pg_proc WHERE proname = 'jet_right'"_s), 0);
  }

  // Another desk writes contacts, tasks, room names and call records: this
  // desk hears of each table, once for a burst, and not of its own writes.
  void otherDesksChangesArrive() {
    TestHome home;
    Sys_DM().DataModuleCreate();
    QSignalSpy changes(&Sys_DM().Link(), &TStoreLink::tablesChanged);
    Sys_DM().Execute(u"INSERT INTO MainInfo (Name) VALUES ('own')"_s);
    QSqlDatabase other = OtherDesk();
    QVERIFY(other.transaction());
    QVERIFY(Run(other, u"INSERT INTO Task_Table (Title) VALUES ('towels')"_s));
    QVERIFY(Run(other, u"UPDATE Exts SET RoomNo = '101' WHERE PortID = 4"_s));
    QVERIFY(Run(other, u"UPDATE Exts SET state = 1 WHERE PortID = 5"_s)); // not shared
    QVERIFY(other.commit());
    QTRY_COMPARE(changes.size(), 1);
    QCOMPARE(changes[0][0].toStringList(), (QStringList{u"exts"_s, u"task_table"_s}));
    QVERIFY(other.transaction());
    QVERIFY(Run(other, u"UPDATE MainInfo SET Phone1 = '5' WHERE Name = 'own'"_s));
    QVERIFY(Run(other, kInsertRecord.arg(u"NULL"_s, u"0"_s)));
    QVERIFY(other.commit());
    QTRY_COMPARE(changes.size(), 2);
    QCOMPARE(changes[1][0].toStringList(), (QStringList{u"maininfo"_s, u"pbxconrecords"_s}));
  }

  // Two desks save the same contact: the later save wins, its desk is told
  // that it replaced a change, and the desk whose save was replaced hears
  // of it by name.
  void laterSaveWinsAndIsTold() {
    TestHome home;
    RecordingShell shell;
    TDirectoryPages pages;
    Sys_DM().DataModuleCreate();
    TMaininfoRecord contact;
    contact.Name = u"Mrs Lee"_s;
    contact.Phone1 = u"8001"_s;
    pages.AddMainInfo(contact);
    const int id = pages.CurrentMatID;
    shell.Messages.clear();
    QSqlDatabase other = OtherDesk();
    QVERIFY(Run(other, u"UPDATE MainInfo SET Phone1 = '8009' WHERE ID = %1"_s.arg(id)));
    contact.Phone1 = u"8002"_s;
    pages.UpdateMainInfo(contact, id);
    QCOMPARE(Count(other, u"SELECT Phone1 FROM MainInfo WHERE ID = %1"_s.arg(id)), 8002);
    QCOMPARE(shell.Messages.size(), 2); // the warning, then the usual "saved"
    QVERIFY(shell.Messages[0].Text.contains(u"\u201cMrs Lee\u201d在这里显示之后被另一个前台改过了"_s));
    shell.Messages.clear();
    pages.UpdateMainInfo(contact, id); // nothing in between: no warning
    QCOMPARE(shell.Messages.size(), 1);

    // Now the other desk's later save replaces this desk's version 3.
    QSignalSpy overwritten(&Sys_DM().Link(), &TStoreLink::ownWriteOverwritten);
    QVERIFY(Run(other,
                u"SELECT pg_notify('trunkdesk_changes', 'overwritten:maininfo:%1:2')"_s.arg(id)));
    QVERIFY(Run(other,
                u"SELECT pg_notify('trunkdesk_changes', 'overwritten:maininfo:%1:3')"_s.arg(id)));
    QTRY_COMPARE(overwritten.size(), 1);
    QCOMPARE(overwritten[0][1].toLongLong(), id);
    pages.ContactOverwritten(id);
    QVERIFY(shell.Messages.last().Text.contains(u"\u201cMrs Lee\u201d的修改已被"_s));
  }
};

QTEST_GUILESS_MAIN(SharedStoreTest)
#include "tst_shared_pg.moc"
