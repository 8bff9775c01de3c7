#include "directory/SysDM_Unit.h"

#include "directory/JetFunctions.h"
#include "directory/JetSql.h"
#include "directory/StoreError.h"
#include "directory/StoreServerLink.h"
#include "directory/WakeUpAlarmStore.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

#include <sqlite3.h>

#include <functional>

using namespace Qt::StringLiterals;

const QString TSys_DM::Memo_SQL_Exts = u"\n"
                                       u"CREATE TABLE Exts (\n"
                                       u"ID  integer IDENTITY(1,1) PRIMARY KEY ,\n"
                                       u"PortID integer,\n"
                                       u"userType integer,\n"
                                       u"Ext varchar(50),\n"
                                       u"srvClass integer,\n"
                                       u"MoringTime date,\n"
                                       u"LeaveMessage varchar(50),\n"
                                       u"state integer,\n"
                                       u"RoomNo varchar(50),\n"
                                       u"[Memo] memo\n"
                                       u");"_s;

const QString TSys_DM::Memo_SQL_PBXConRecords = u"CREATE TABLE PBXConRecords (\n"
                                                u"ID  integer IDENTITY(1,1) PRIMARY KEY ,\n"
                                                u"Caller varchar(50),\n"
                                                u"Called varchar(50),\n"
                                                u"startTime date,\n"
                                                u"connectTime date,\n"
                                                u"stopTime date,\n"
                                                u"assType integer,\n"
                                                u"assPhone varchar(50),\n"
                                                u"IOFlag integer,\n"
                                                u"RecType integer\n"
                                                u");"_s;

const QString TSys_DM::Memo_SQL_MoringCallLog = u"CREATE TABLE MoringCallLog(\n"
                                                u"ID  integer IDENTITY(1,1) PRIMARY KEY ,\n"
                                                u"RoomNo varchar(50),\n"
                                                u"Ext varchar(50),\n"
                                                u"CreateTime date,\n"
                                                u"MoringCallTime date,\n"
                                                u"State integer\n"
                                                u");"_s;

namespace {
const QString kConRecords =
    u"CREATE TABLE conRecords ([ID] integer IDENTITY (1,1),[TelNos] text,[DateTime] date,[State] integer,[Memo] memo,CONSTRAINT [Index1] PRIMARY KEY ([ID]));"_s;
const QString kTaskTable =
    u"CREATE TABLE Task_Table ([ID] integer IDENTITY (1,1),[Title] varchar(50),[Context] memo,[Status] integer,[createDateTime] date,[LastDateTime] date,[FinishDateTime] date,[creater] varchar(50),[contacters] varchar(50),CONSTRAINT [Index1] PRIMARY KEY ([ID]));"_s;
// The contact book as a new file has it; the upgrade adds IDCard, GrpName and
// BranchTel like it does to a file from an older console.
const QString kMainInfo =
    u"CREATE TABLE MainInfo ([ID] integer IDENTITY (1,1),[Name] text,[Phone1] text,[MobilePhone] text,[Address] text,[Company] text,[E_Mail] text,[Web] text,[QQ] text,[MSN] text,[Duty] text,[Birthday] date,[Fax] text,[Postalcode] text,[Memo] memo,[GroupType] text,CONSTRAINT [Index1] PRIMARY KEY ([ID]));"_s;

QString ConnectionName() {
  return QString::fromUtf16(TSys_DM::kConnectionName);
}

void CloseConnection() {
  if (QSqlDatabase::contains(ConnectionName())) {
    {
      QSqlDatabase db = QSqlDatabase::database(ConnectionName(), false);
      db.close();
    }
    QSqlDatabase::removeDatabase(ConnectionName());
  }
}

// Runs statements of one guarded group: the first failure ends the group, and
// the failure is neither shown nor logged.
void GuardedGroup(TSys_DM &dm, std::initializer_list<QString> statements) {
  try {
    for (const QString &s : statements)
      dm.Execute(s);
  } catch (const EDatabaseError &) {
  }
}

// The caller lookups ask whether a stored number contains the caller's last
// seven characters (like, which folds ASCII letters only) or ends with them.
// Neither can use an ordinary index, so the store keeps a table of keys: each
// run of seven characters of a number of 7 to 70 characters, every part of a
// shorter number, and one mark for a longer one (which the lookup then always
// reads), all with ASCII letters lowered as like folds them. Triggers keep it,
// in SQL of the engine's own, so a contact written by another program is
// found as well.
const QString kKeyMarkLong = QString::fromUtf16(TSys_DM::kCallerKeyLong);
constexpr int kKeyStarts = 64; // numbers up to 70 characters get their runs

// Every key of the numbers a subquery yields as (s, id).
QString KeysOf(const QString &numbers) {
  return uR"(SELECT lower(substr(v.s, p.n, 7)), v.id FROM (%1) v, CallerKeyStarts p
  WHERE length(v.s) BETWEEN 7 AND %2 AND p.n <= length(v.s) - 6
UNION ALL SELECT lower(substr(v.s, a.n, b.n)), v.id FROM (%1) v, CallerKeyStarts a, CallerKeyStarts b
  WHERE length(v.s) <= 6 AND a.n <= length(v.s) AND b.n <= length(v.s) - a.n + 1
UNION ALL SELECT '%3', v.id FROM (%1) v WHERE length(v.s) > %2)"_s.arg(numbers)
      .arg(kKeyStarts + 6)
      .arg(kKeyMarkLong);
}

QString NumbersOf(const QString &row) {
  return u"SELECT %1.Phone1 AS s, %1.ID AS id UNION ALL SELECT %1.MobilePhone, %1.ID"_s.arg(row);
}

const QStringList kCallerKeyObjects = {u"CallerKeys"_s, u"CallerKeyStarts"_s,
                                       u"MainInfo_CallerKeys_Insert"_s,
                                       u"MainInfo_CallerKeys_Update"_s,
                                       u"MainInfo_CallerKeys_Delete"_s};

void Native(const QString &sql) {
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql))
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + sql.simplified().left(160) +
                         u']');
}

int NativeCount(const QString &sql) {
  QSqlQuery q(StoreConnection());
  return q.exec(sql) && q.next() ? q.value(0).toInt() : -1;
}

// Runs schema statements as one transaction: all of them, or on a failure
// (raised as EDatabaseError) none.
void InOneTransaction(const std::function<void()> &statements) {
  QSqlDatabase db = StoreConnection();
  if (!db.transaction())
    throw EDatabaseError(db.lastError().text());
  try {
    statements();
  } catch (...) {
    db.rollback();
    throw;
  }
  if (!db.commit())
    throw EDatabaseError(db.lastError().text());
}

// The same key table on a shared store, kept by one trigger in the server's
// own language. A contact's keys all come from its two numbers, so a change
// drops that contact's keys and makes them again.
void EnsureCallerKeysOnServer() {
  if (NativeCount(u"SELECT count(*) FROM pg_trigger WHERE tgname = 'maininfo_callerkeys'"_s) == 1 &&
      Sys_DM().TableExists(u"CallerKeys"_s))
    return;
  WriteLog(u"Building the caller index for %1 contacts"_s.arg(
      NativeCount(u"SELECT count(*) FROM MainInfo"_s)));
  InOneTransaction([] {
    Native(u"DROP TRIGGER IF EXISTS MainInfo_CallerKeys ON MainInfo"_s);
    Native(u"DROP TABLE IF EXISTS CallerKeys"_s);
    Native(u"DROP TABLE IF EXISTS CallerKeyStarts"_s);
    Native(u"CREATE TABLE CallerKeyStarts (n integer PRIMARY KEY)"_s);
    Native(u"INSERT INTO CallerKeyStarts SELECT generate_series(1, %1)"_s.arg(kKeyStarts));
    Native(u"CREATE TABLE CallerKeys (Key text NOT NULL, ContactID integer NOT NULL, "
           u"PRIMARY KEY (Key, ContactID))"_s);
    Native(u"CREATE INDEX CallerKeys_Contact ON CallerKeys (ContactID)"_s);
    Native(u"INSERT INTO CallerKeys (Key, ContactID) "_s +
           KeysOf(u"SELECT Phone1 AS s, ID AS id FROM MainInfo UNION ALL "
                  u"SELECT MobilePhone, ID FROM MainInfo"_s) +
           u" ON CONFLICT DO NOTHING"_s);
    Native(u"CREATE OR REPLACE FUNCTION maininfo_callerkeys() RETURNS trigger LANGUAGE plpgsql "
           u"AS $$ BEGIN "
           u"IF TG_OP <> 'INSERT' THEN DELETE FROM CallerKeys WHERE ContactID = OLD.ID; END IF; "
           u"IF TG_OP <> 'DELETE' THEN INSERT INTO CallerKeys (Key, ContactID) "_s +
           KeysOf(NumbersOf(u"NEW"_s)) +
           u" ON CONFLICT DO NOTHING; END IF; RETURN NULL; END $$"_s);
    Native(u"CREATE TRIGGER MainInfo_CallerKeys AFTER INSERT OR DELETE OR UPDATE OF ID, Phone1, "
           u"MobilePhone ON MainInfo FOR EACH ROW EXECUTE FUNCTION maininfo_callerkeys()"_s);
  });
  WriteLog(u"The caller index is built: %1 keys"_s.arg(
      NativeCount(u"SELECT count(*) FROM CallerKeys"_s)));
}

// Builds the key table when it or one of its triggers is missing: a store from
// an older console, or one whose triggers another program dropped. One
// transaction, so a start that dies half-way leaves the store as it was.
void EnsureCallerKeys() {
  if (Sys_DM().Target() == SqlTarget::Postgres) {
    EnsureCallerKeysOnServer();
    return;
  }
  QString names;
  for (const QString &name : kCallerKeyObjects)
    names += (names.isEmpty() ? u"'"_s : u",'"_s) + name + u'\'';
  if (NativeCount(u"SELECT count(*) FROM sqlite_master WHERE name IN ("_s + names + u')') ==
      kCallerKeyObjects.size())
    return;
  const int contacts = NativeCount(u"SELECT count(*) FROM MainInfo"_s);
  WriteLog(u"Building the caller index for %1 contacts"_s.arg(contacts));
  QSqlDatabase db = StoreConnection();
  if (!db.transaction())
    throw EDatabaseError(u"Cannot build the caller index: "_s + db.lastError().text());
  try {
    Native(u"DROP TRIGGER IF EXISTS MainInfo_CallerKeys_Insert"_s);
    Native(u"DROP TRIGGER IF EXISTS MainInfo_CallerKeys_Update"_s);
    Native(u"DROP TRIGGER IF EXISTS MainInfo_CallerKeys_Delete"_s);
    Native(u"DROP TABLE IF EXISTS CallerKeys"_s);
    Native(u"DROP TABLE IF EXISTS CallerKeyStarts"_s);
    Native(u"CREATE TABLE CallerKeyStarts (n INTEGER PRIMARY KEY)"_s);
    Native(u"WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < %1) "
           u"INSERT INTO CallerKeyStarts SELECT n FROM c"_s.arg(kKeyStarts));
    Native(u"CREATE TABLE CallerKeys (Key TEXT NOT NULL, ContactID INTEGER NOT NULL, "
           u"PRIMARY KEY (Key, ContactID)) WITHOUT ROWID"_s);
    // Sorted first: the keys go into the tree in order, several times quicker
    // than one by one.
    Native(u"INSERT OR IGNORE INTO CallerKeys (Key, ContactID) "_s +
           KeysOf(u"SELECT Phone1 AS s, ID AS id FROM MainInfo UNION ALL "
                  u"SELECT MobilePhone, ID FROM MainInfo"_s) +
           u" ORDER BY 1, 2"_s);
    Native(u"CREATE TRIGGER MainInfo_CallerKeys_Insert AFTER INSERT ON MainInfo BEGIN "
           u"INSERT OR IGNORE INTO CallerKeys (Key, ContactID) "_s +
           KeysOf(NumbersOf(u"new"_s)) + u"; END"_s);
    // Both numbers' keys go and come back: a key the two numbers share stays.
    Native(u"CREATE TRIGGER MainInfo_CallerKeys_Update AFTER UPDATE OF ID, Phone1, MobilePhone "
           u"ON MainInfo BEGIN DELETE FROM CallerKeys WHERE (Key, ContactID) IN ("_s +
           KeysOf(NumbersOf(u"old"_s)) +
           u"); INSERT OR IGNORE INTO CallerKeys (Key, ContactID) "_s +
           KeysOf(NumbersOf(u"new"_s)) + u"; END"_s);
    Native(u"CREATE TRIGGER MainInfo_CallerKeys_Delete AFTER DELETE ON MainInfo BEGIN "
           u"DELETE FROM CallerKeys WHERE (Key, ContactID) IN ("_s +
           KeysOf(NumbersOf(u"old"_s)) + u"); END"_s);
  } catch (...) {
    db.rollback();
    throw;
  }
  if (!db.commit())
    throw EDatabaseError(u"Cannot build the caller index: "_s + db.lastError().text());
  WriteLog(u"The caller index is built: %1 keys"_s.arg(
      NativeCount(u"SELECT count(*) FROM CallerKeys"_s)));
}

// The call-record view pages a date window newest first, by start time and then
// by arrival. One index in that order, holding the columns the view's
// conditions test (the number boxes always take part, an empty box as like
// '%%'), answers a page by walking the window from its newest end, a count from
// the index alone, and a deep page by skipping index entries without reading
// rows. It replaces the older index on startTime alone, a prefix of it. A store
// from an older console gets it at its first start here; a failure (a full
// disk on a big store) leaves the store as it was, the old index in place, and
// the pages merely slower.
void EnsureRecordPageIndex() {
  const QString wanted = QString::fromUtf16(TSys_DM::kRecordPageIndex);
  if (Sys_DM().Target() == SqlTarget::Postgres) {
    try {
      Native(u"CREATE INDEX IF NOT EXISTS %1 ON PBXConRecords "
             u"(startTime, ID, Caller, Called, RecType)"_s.arg(wanted));
    } catch (const EDatabaseError &error) {
      WriteLog(u"The call-record index could not be built: "_s + error.Message());
    }
    return;
  }
  if (NativeCount(u"SELECT count(*) FROM sqlite_master WHERE type='index' AND name='%1'"_s.arg(
          wanted)) == 1 &&
      NativeCount(u"SELECT count(*) FROM sqlite_master WHERE name='PBXConRecords_startTime'"_s) ==
          0)
    return;
  const int records = NativeCount(u"SELECT count(*) FROM PBXConRecords"_s);
  WriteLog(u"Building the call-record index for %1 records"_s.arg(records));
  try {
    InOneTransaction([&] {
      Native(u"CREATE INDEX IF NOT EXISTS %1 ON PBXConRecords "
             u"(startTime, ID, Caller, Called, RecType)"_s.arg(wanted));
      Native(u"DROP INDEX IF EXISTS PBXConRecords_startTime"_s);
    });
  } catch (const EDatabaseError &error) {
    WriteLog(u"The call-record index could not be built: "_s + error.Message());
    return;
  }
  WriteLog(u"The call-record index is built"_s);
}

bool ExtsHasColumn(const QString &column) {
  if (Sys_DM().Target() == SqlTarget::Postgres)
    return NativeCount(u"SELECT count(*) FROM information_schema.columns WHERE table_schema = "
                       u"current_schema() AND table_name = 'exts' AND column_name = '%1'"_s.arg(
                           column.toLower())) == 1;
  return NativeCount(u"SELECT count(*) FROM pragma_table_info('Exts') WHERE name='%1'"_s.arg(
             column)) == 1;
}

// The front desk keeps who stays in a room and whether it is let in Exts, and
// what was done to which room in RoomHistory. A store from an older console
// takes the two columns in one transaction: its rows keep every value and read
// as vacant. A failure leaves the store as it was; the rooms then can't be
// checked in or out, and the log says why.
void EnsureFrontDeskSchema() {
  if (!ExtsHasColumn(u"GuestName"_s) || !ExtsHasColumn(u"Occupied"_s)) {
    try {
      InOneTransaction([] {
        if (!ExtsHasColumn(u"GuestName"_s))
          Native(u"ALTER TABLE Exts ADD COLUMN GuestName TEXT"_s);
        if (!ExtsHasColumn(u"Occupied"_s))
          Native(u"ALTER TABLE Exts ADD COLUMN Occupied INTEGER NOT NULL DEFAULT 0"_s);
      });
      WriteLog(u"The room table is upgraded for the front desk: guest name and occupancy "
               u"added to %1 rooms"_s.arg(NativeCount(u"SELECT count(*) FROM Exts"_s)));
    } catch (const EDatabaseError &error) {
      WriteLog(u"The room table could not be upgraded for the front desk: "_s + error.Message());
    }
  }
  // The server's spelling of the auto-numbered key; the columns are the same.
  const QString key = Sys_DM().Target() == SqlTarget::Postgres
                          ? u"integer GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"_s
                          : u"INTEGER PRIMARY KEY AUTOINCREMENT"_s;
  try {
    Native(u"CREATE TABLE IF NOT EXISTS RoomHistory (ID %1, "
           u"ActTime TEXT, RoomNo TEXT, Ext TEXT, Action TEXT, Operator TEXT)"_s.arg(key));
  } catch (const EDatabaseError &error) {
    WriteLog(u"The room history table could not be made: "_s + error.Message());
  }
}

// Why the server did not take the connection, in words for the desk; the
// server's own text goes to the log.
QString OpenFailure(const QString &where, const QString &serverText, bool *unreachable) {
  const QString t = serverText.toLower();
  *unreachable = false;
  if (t.contains(u"password authentication failed"_s) || t.contains(u"no password supplied"_s) ||
      (t.contains(u"role \""_s) && t.contains(u"does not exist"_s)))
    return u"数据库服务器 %1 拒绝了用户名或密码: 请在 系统设置 的\"数据库设置\"页检查。"_s.arg(where);
  if (t.contains(u"database \""_s) && t.contains(u"does not exist"_s))
    return u"数据库服务器 %1 上没有这个数据库: 请在 系统设置 的\"数据库设置\"页检查数据库名,"
           u"或先在服务器上建立它。"_s.arg(where);
  *unreachable = true;
  return u"连接不上数据库服务器 %1: 它没有应答。控制台先不用共享数据库继续工作, 呼叫记录暂存在"
         u"本机, 服务器应答后自动连接并写入。"_s.arg(where);
}

// The advisory lock the desks' schema steps share ("TD" and a date).
constexpr qint64 kSchemaLock = 0x5444'2026'1124;

// What the exchange sends of a call record, NULL counting as a value. The
// start time is not among them: each desk stamps a record when it arrives.
const QStringList kRecordKey = {u"coalesce(Caller, '')"_s,         u"coalesce(Called, '')"_s,
                                u"coalesce(stopTime::text, '')"_s, u"coalesce(IOFlag, -1)"_s,
                                u"coalesce(RecType, -1)"_s,        u"coalesce(assType, -1)"_s,
                                u"coalesce(assPhone, '')"_s};
// Each desk stamps a record with its own clock as it arrives, so two desks'
// copies of one record may differ by a moment, across a second's edge or by
// the desks' clocks apart. Copies stamped less than this apart are one record;
// two real calls between the same numbers with the same flags don't end so
// close together.
constexpr int kTwinSeconds = 3;

QString RecordStamp(const QString &row) {
  return u"coalesce(jet_date(%1startTime), timestamp 'epoch')"_s.arg(row);
}

// Two desks receive every call record the exchange pushes, and both append
// it; a record is one row however many desks stored it (a transfer and its
// first leg differ in assType and assPhone). The rule is an exclusion
// constraint: same columns, stamps closer than kTwinSeconds. The appends skip
// a row that the rule refuses (ON CONFLICT DO NOTHING in TPendingWrites). A
// server without the btree_gist extension gets a plain unique index that
// also takes the stamp, which still catches the copies of one second. A store
// that two desks already shared holds twins: the later copies go in the same
// transaction that makes the rule, so the upgrade is all or nothing. A file
// store keeps its old behaviour: one desk appends each record once.
void EnsureRecordOnce() {
  const QString name = QString::fromUtf16(TSys_DM::kRecordOnceIndex);
  if (NativeCount(u"SELECT count(*) FROM pg_class WHERE relname = '%1' AND relnamespace = "
                  u"current_schema()::regnamespace"_s.arg(name.toLower())) == 1)
    return;
  QStringList same;
  QStringList elements;
  for (const QString &column : kRecordKey) {
    same << QString(column).replace(u"coalesce("_s, u"coalesce(a."_s) + u" = "_s +
                QString(column).replace(u"coalesce("_s, u"coalesce(b."_s);
    elements << u'(' + column + u") WITH ="_s;
  }
  const QString nearby =
      u"abs(extract(epoch FROM %1 - %2)) < %3"_s.arg(RecordStamp(u"a."_s), RecordStamp(u"b."_s))
          .arg(kTwinSeconds);
  const QString stamp = RecordStamp(QString());
  const QString window =
      u"(tsrange(%1 - interval '%2 ms', %1 + interval '%2 ms')) WITH &&"_s.arg(stamp).arg(
          kTwinSeconds * 500);
  QString unavailable;
  try {
    Native(u"CREATE EXTENSION IF NOT EXISTS btree_gist"_s);
  } catch (const EDatabaseError &error) {
    unavailable = error.Message();
  }
  try {
    InOneTransaction([&] {
      QSqlQuery q(StoreConnection());
      const QString twins = unavailable.isEmpty()
                                ? nearby
                                : u"%1 = %2"_s.arg(RecordStamp(u"a."_s), RecordStamp(u"b."_s));
      if (!q.exec(u"DELETE FROM PBXConRecords a USING PBXConRecords b WHERE b.ID < a.ID AND %1 "
                  u"AND %2"_s.arg(same.join(u" AND "_s), twins)))
        throw EDatabaseError(q.lastError().text());
      if (q.numRowsAffected() > 0)
        WriteLog(u"Call records stored twice by two desks: %1 second copies removed"_s.arg(
            q.numRowsAffected()));
      if (unavailable.isEmpty())
        Native(u"ALTER TABLE PBXConRecords ADD CONSTRAINT %1 EXCLUDE USING gist (%2, %3)"_s.arg(
            name, elements.join(u", "_s), window));
      else
        Native(u"CREATE UNIQUE INDEX %1 ON PBXConRecords ((%2), (%3))"_s.arg(
            name, kRecordKey.join(u"), ("_s), stamp));
    });
  } catch (const EDatabaseError &error) {
    WriteLog(u"The call records' uniqueness rule could not be made: "_s + error.Message());
    return;
  }
  if (!unavailable.isEmpty())
    WriteLog(u"Without the server's btree_gist extension two desks' copies of a call record "
             u"are one only when stamped in the same second ("_s +
             unavailable + u')');
}

// Every write to what the desks share tells the others, whoever wrote it: a
// trigger per table, one notice per statement (the server folds the notices of
// one transaction). Rooms notify only for what the desks share of them, their
// names and notes; the desk's own state columns change all day.
void EnsureChangeNotices() {
  static const QList<std::pair<QString, QString>> watched = {
      {u"MainInfo"_s, u"INSERT OR UPDATE OR DELETE"_s},
      {u"Task_Table"_s, u"INSERT OR UPDATE OR DELETE"_s},
      {u"Exts"_s, u"UPDATE OF RoomNo, Memo, GuestName, Occupied"_s},
      {u"PBXConRecords"_s, u"INSERT OR DELETE"_s}};
  const int present = NativeCount(
      u"SELECT count(*) FROM pg_trigger WHERE tgname LIKE '%_changes' AND NOT tgisinternal"_s);
  if (present == int(watched.size()))
    return;
  try {
    InOneTransaction([] {
      Native(
          u"CREATE OR REPLACE FUNCTION trunkdesk_changed() RETURNS trigger LANGUAGE plpgsql "
          u"AS $$ BEGIN PERFORM pg_notify('%1', lower(TG_TABLE_NAME)); RETURN NULL; END $$"_s.arg(
              QString::fromUtf16(TStoreLink::kChannel)));
      for (const auto &[table, events] : watched) {
        Native(u"DROP TRIGGER IF EXISTS %1_Changes ON %1"_s.arg(table));
        Native(u"CREATE TRIGGER %1_Changes AFTER %2 ON %1 FOR EACH STATEMENT EXECUTE FUNCTION "
               u"trunkdesk_changed()"_s.arg(table, events));
      }
    });
  } catch (const EDatabaseError &error) {
    WriteLog(u"Other desks' changes can't be announced: "_s + error.Message());
  }
}

// A contact's version: each save makes it one higher, so a desk can see that
// another desk saved the contact since it was shown. Both stores have the
// column (a copied store keeps its columns); only the server counts, by a
// trigger that catches every writer, since one desk can't overtake itself.
void EnsureRowVersion() {
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  if (!Sys_DM().FieldExists(u"MainInfo"_s, u"RowVersion"_s)) {
    try {
      Native(u"ALTER TABLE MainInfo ADD COLUMN RowVersion %1 NOT NULL DEFAULT 0"_s.arg(
          server ? u"bigint"_s : u"INTEGER"_s));
    } catch (const EDatabaseError &error) {
      WriteLog(u"The contacts' version column could not be added: "_s + error.Message());
      return;
    }
  }
  if (!server ||
      NativeCount(u"SELECT count(*) FROM pg_trigger WHERE tgname = 'maininfo_rowversion'"_s) == 1)
    return;
  try {
    InOneTransaction([] {
      Native(u"CREATE OR REPLACE FUNCTION maininfo_rowversion() RETURNS trigger LANGUAGE plpgsql "
             u"AS $$ BEGIN NEW.RowVersion := OLD.RowVersion + 1; RETURN NEW; END $$"_s);
      Native(u"CREATE TRIGGER MainInfo_RowVersion BEFORE UPDATE ON MainInfo FOR EACH ROW "
             u"EXECUTE FUNCTION maininfo_rowversion()"_s);
    });
  } catch (const EDatabaseError &error) {
    WriteLog(u"The contacts' version trigger could not be made: "_s + error.Message());
  }
}

void EnsureVersionMarker() {
  const QString marker = QString::fromUtf16(TSys_DM::kVersionTable);
  try {
    if (!Sys_DM().TableExists(marker))
      Native(u"CREATE TABLE %1 (Version integer NOT NULL)"_s.arg(marker));
    if (NativeCount(u"SELECT count(*) FROM %1"_s.arg(marker)) == 0)
      Native(u"INSERT INTO %1 (Version) VALUES (%2)"_s.arg(marker).arg(TSys_DM::kStoreVersion));
  } catch (const EDatabaseError &error) {
    WriteLog(u"The store's version mark could not be written: "_s + error.Message());
  }
}
} // namespace

TSys_DM::TSys_DM() {
  m_link.Reopen = [this] { return ReopenServer(); };
}

TSys_DM::~TSys_DM() = default;

TSys_DM &Sys_DM() {
  static TSys_DM dm;
  return dm;
}

QSqlDatabase StoreConnection() {
  return QSqlDatabase::database(ConnectionName(), false);
}

bool TSys_DM::Connected() const {
  return StoreConnection().isOpen();
}

void TSys_DM::DataModuleCreate() {
  mainADOQuery.Close();
  ADOQuery_Temp.Close();
  m_pending.Close();
  m_link.Reset();
  CloseConnection();
  m_target = SqlTarget::Sqlite;
  m_schemaChecked = false;
  if (SysConfig().SharedStoreInUse()) {
    OpenServer();
    return;
  }

  const QString setting = SysConfig().DBFile;
  if (!setting.isEmpty() && QFileInfo(setting).isFile()) {
    m_fileName = setting;
  } else {
    m_fileName = AppFile(u"Database/Notes_DB.db"_s);
    QDir().mkpath(QFileInfo(m_fileName).absolutePath());
  }
  // Records that waited for a busy store, beside the store they belong to. They
  // are written once the schema is checked, or kept if the store is no good.
  const QFileInfo store(m_fileName);
  const QString spill = store.absolutePath() + u'/' + store.completeBaseName() + u".pending"_s;
  auto openPending = qScopeGuard([&] { m_pending.Open(spill); });

  // A file the console can't write would open and read fine and fail only at
  // the first call record; better to say so at start. Opening it for writing
  // and closing it changes nothing in it.
  if (QFileInfo::exists(m_fileName)) {
    QFile probe(m_fileName);
    if (!probe.open(QIODevice::ReadWrite))
      throw EDatabaseError(u"The database file is readonly: "_s + m_fileName + u" ("_s +
                           probe.errorString() + u')');
  }

  QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, ConnectionName());
  db.setDatabaseName(m_fileName);
  // Another program holding the file gets a moment, not the console's whole shift.
  db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=1000"_s);
  if (!db.open())
    throw EDatabaseError(u"Cannot open the database "_s + m_fileName + u": "_s +
                         db.lastError().text());

  const QVariant handle = db.driver()->handle();
  if (handle.isValid() && qstrcmp(handle.typeName(), "sqlite3*") == 0) {
    if (sqlite3 *raw = *static_cast<sqlite3 *const *>(handle.data()))
      RegisterJetFunctions(raw);
  }

  CheckStoreIsOurs();
  // A posted call record must survive the console's crash: the write-ahead log
  // with synchronous=NORMAL keeps every committed row.
  QSqlQuery pragma(db);
  if (!pragma.exec(u"PRAGMA journal_mode=WAL"_s) || !pragma.exec(u"PRAGMA synchronous=NORMAL"_s))
    throw EDatabaseError(u"Not a usable database: "_s + m_fileName + u": "_s +
                         pragma.lastError().text());

  if (!TableExists(u"MainInfo"_s))
    Execute(kMainInfo);
  DBinit();
  m_schemaChecked = true;
}

// The shared store: the same schema and upgrade steps as the file, on the
// server named in [DB], through the translator's PostgreSQL target.
void TSys_DM::OpenServer() {
  const TSysConfig &c = SysConfig();
  m_fileName = TStoreServer::FromConfig(c).Describe();
  // Records that waited for the server are kept on this desk, one file per
  // database, and written once it takes them.
  QString base = c.DBDatabase;
  base.replace(QRegularExpression(u"[^A-Za-z0-9_-]"_s), u"_"_s);
  const QString spill = AppFile(u"Database/"_s) + (base.isEmpty() ? u"shared"_s : base) +
                        u".pending"_s;
  QDir().mkpath(QFileInfo(spill).absolutePath());
  auto openPending = qScopeGuard([&] { m_pending.Open(spill); });

  if (c.DBDriver.compare(u"QPSQL"_s, Qt::CaseInsensitive) != 0)
    throw EDatabaseError(u"Unknown database driver in the settings: "_s + c.DBDriver +
                         u" (QPSQL for a database server, or nothing for the file)"_s);
  if (!QSqlDatabase::isDriverAvailable(u"QPSQL"_s))
    throw EDatabaseError(u"This computer lacks the PostgreSQL driver for the database server"_s);
  QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, ConnectionName());
  QString refused;
  if (!SetServerParameters(db, TStoreServer::FromConfig(c), TStoreLink::kConnectTimeoutSeconds,
                           &refused, TStoreLink::ConnectOptions()))
    throw EDatabaseError(refused);
  m_target = SqlTarget::Postgres;
  if (!db.open()) {
    const QString reason = db.lastError().text().trimmed();
    WriteLog(
        u"Store: the database server %1 refused or did not answer: %2"_s.arg(m_fileName, reason));
    bool unreachable = false;
    const QString words = OpenFailure(m_fileName, reason, &unreachable);
    // A server that is down comes back by itself; a wrong password or name
    // does not, so only the first is tried again.
    if (unreachable)
      m_link.StartRetrying(reason);
    throw EDatabaseError(words);
  }
  ServerSession();
}

// The session on a newly opened connection; the first time also the checks
// and the schema. A store the console must not write is closed again.
void TSys_DM::ServerSession() {
  // The server's notices ("already exists, skipping") are no news to a desk.
  Native(u"SET client_min_messages = warning"_s);
  if (!m_schemaChecked) {
    // Desks that start together take turns at the checks and the schema
    // steps: two first starts would both make the tables and the rooms. The
    // lock ends with the step, or with the session of a desk that died in it.
    Native(u"SELECT pg_advisory_lock(%1)"_s.arg(kSchemaLock));
    auto unlock = qScopeGuard([] {
      if (StoreConnection().isOpen()) // a refused store was closed, and its lock with it
        QSqlQuery(StoreConnection()).exec(u"SELECT pg_advisory_unlock(%1)"_s.arg(kSchemaLock));
    });
    CheckStoreIsOurs();
    InOneTransaction([] {
      for (const QString &function : PostgresJetFunctions())
        Native(function);
    });
    if (!TableExists(u"MainInfo"_s))
      Execute(kMainInfo);
    DBinit();
    m_schemaChecked = true;
  }
  // Only a store in use is watched; one refused above was closed on purpose.
  m_link.Attach();
}

QString TSys_DM::ReopenServer() {
  QSqlDatabase db = StoreConnection();
  db.close();
  if (!db.open())
    return db.lastError().text().trimmed();
  try {
    ServerSession();
  } catch (const EDatabaseError &error) {
    db.close();
    return error.Message();
  }
  return QString();
}

void TSys_DM::CheckStoreIsOurs() {
  const QStringList tables = StoreConnection().tables(QSql::Tables);
  if (tables.isEmpty())
    return;
  QString refusal;
  const QString marker = QString::fromUtf16(kVersionTable);
  if (TableExists(marker)) {
    const int version = NativeCount(u"SELECT max(Version) FROM %1"_s.arg(marker));
    if (version > kStoreVersion)
      refusal = u"数据库 %1 是较新版本的控制台建立的(结构 %2; 本控制台只认到 %3)。其中什么都没有改动。"
                u"请先升级本控制台再使用这个数据库。"_s.arg(m_fileName)
                    .arg(version)
                    .arg(kStoreVersion);
  } else {
    static const QStringList ours = {u"MainInfo"_s,   u"Exts"_s,       u"PBXConRecords"_s,
                                     u"conRecords"_s, u"Task_Table"_s, u"MoringCallLog"_s};
    bool found = false;
    for (const QString &table : ours)
      found = found || TableExists(table);
    if (!found) {
      QStringList some = tables.mid(0, 3);
      refusal =
          u"数据库 %1 里是别的程序的表(%2%3)。其中什么都没有改动。请在 系统设置 里为控制台指定"
          u"它自己的数据库。"_s.arg(
              m_fileName, some.join(u", "_s), tables.size() > some.size() ? u", ..."_s : QString());
    }
  }
  if (refusal.isEmpty())
    return;
  // Closed, so that not even a kept call record is written into it.
  StoreConnection().close();
  throw EDatabaseError(refusal);
}

void TSys_DM::DBinit() {
  if (!TableExists(u"conRecords"_s))
    Execute(kConRecords);
  if (!TableExists(u"Task_Table"_s))
    Execute(kTaskTable);
  if (!TableExists(u"Exts"_s)) {
    Execute(Memo_SQL_Exts);
    // 3072 rows in one transaction: as separate commits they would take seconds.
    QSqlDatabase db = StoreConnection();
    db.transaction();
    try {
      for (int port = 0; port < 3072; ++port)
        Execute(u"INSERT INTO Exts (portID) values(%1)"_s.arg(port));
    } catch (...) {
      db.rollback();
      throw;
    }
    db.commit();
  }
  if (!TableExists(u"PBXConRecords"_s))
    Execute(Memo_SQL_PBXConRecords);
  if (!FieldExists(u"MainInfo"_s, u"IDCard"_s))
    GuardedGroup(*this, {u"Alter Table MainInfo Add [IDCard] varchar(50)"_s});
  if (!FieldExists(u"MainInfo"_s, u"GrpName"_s))
    GuardedGroup(*this, {u"Alter Table MainInfo Add [GrpName] varchar(50)"_s});
  if (!FieldExists(u"MainInfo"_s, u"BranchTel"_s))
    GuardedGroup(*this, {u"Alter Table MainInfo Add [BranchTel] varchar(50)"_s});
  if (!TableExists(u"MoringCallLog"_s))
    Execute(Memo_SQL_MoringCallLog);
  EnsureCallerKeys();

  // These three probe MainInfo for columns of Exts, so they are always false and
  // the groups run at every start: the first start adds the columns, later ones
  // fail at their first statement, quietly.
  if (!FieldExists(u"MainInfo"_s, u"NoDisturb_Time1_Checked"_s))
    GuardedGroup(*this, {u"Alter Table Exts Add [NoDisturb_Time1_Checked] Bit"_s,
                         u"Alter Table Exts Add [NoDisturb_Time2_Checked] Bit"_s,
                         u"Alter Table Exts Add [NoDisturb_Time3_Checked] Bit"_s,
                         u"Alter Table Exts Add [NoDisturb_Time1_Start] date"_s,
                         u"Alter Table Exts Add [NoDisturb_Time1_End] date"_s,
                         u"Alter Table Exts Add [NoDisturb_Time2_Start] date"_s,
                         u"Alter Table Exts Add [NoDisturb_Time2_End] date"_s,
                         u"Alter Table Exts Add [NoDisturb_Time3_Start] date"_s,
                         u"Alter Table Exts Add [NoDisturb_Time3_End] date"_s});
  if (!FieldExists(u"MainInfo"_s, u"MoringCall_isEveryDay"_s))
    GuardedGroup(*this, {u"Alter Table Exts Add [MoringCall_isEveryDay] Bit"_s,
                         u"Alter Table Exts Add [MoringCall_EveryDay_Time] date"_s});
  if (!FieldExists(u"MainInfo"_s, u"MoringCall_Mode"_s))
    GuardedGroup(*this, {u"Alter Table Exts Add [MoringCall_Mode] integer"_s});

  EnsureRecordPageIndex();
  EnsureFrontDeskSchema();
  // Front desk: failed wake-ups kept until acknowledged, and the attempt of each
  // logged wake-up result.
  WakeUpAlarmStore::EnsureSchema();
  // The call lists' latest hundred. Made once; nothing else changes.
  GuardedGroup(*this,
               {u"CREATE INDEX IF NOT EXISTS conRecords_DateTime ON conRecords ([DateTime])"_s});
  EnsureRowVersion();
  if (m_target == SqlTarget::Postgres) {
    EnsureRecordOnce();
    EnsureChangeNotices();
  }
  EnsureVersionMarker();
}

bool TSys_DM::TableExists(const QString &table) {
  const QString wanted = table.toUpper();
  const QStringList tables = StoreConnection().tables(QSql::AllTables);
  for (const QString &name : tables) {
    if (name.toUpper() == wanted)
      return true;
  }
  return false;
}

bool TSys_DM::FieldExists(const QString &table, const QString &field) {
  OpenSQL(u"select * from %1 where 1=2"_s.arg(table), ADOQuery_Temp);
  return ADOQuery_Temp.HasField(field);
}

void TSys_DM::OpenSQL(const QString &sql, TADOQuery &query) {
  query.Close();
  query.SQL.clear();
  query.SQL = sql;
  query.Open();
}

QString TSys_DM::BuildPageSQL(int pageSize, int page, const QString &table,
                              const QString &condition, const QString &order) {
  if (page == 1)
    return u"SELECT TOP %1 * FROM %2 WHERE (%3) ORDER BY %4"_s.arg(pageSize).arg(table, condition,
                                                                                 order);
  return u"SELECT TOP %1 * FROM %2 WHERE (%3) and  (id NOT IN          (                SELECT TOP %4 id FROM %5 where (%6) ORDER BY %7           ) )ORDER BY %7"_s
      .arg(pageSize)
      .arg(table, condition)
      .arg((page - 1) * pageSize)
      .arg(table, condition, order);
}

int TSys_DM::GetRecordCount(const QString &table, const QString &condition) {
  OpenSQL(u"select count(*) as recordCount from %1 where %2 "_s.arg(table, condition),
          ADOQuery_Temp);
  return ADOQuery_Temp.AsInteger(u"recordCount"_s);
}

namespace {
QVariant DateValue(TDateTime value) {
  return value.IsZero() ? QVariant() : QVariant(FormatFull(value));
}
} // namespace

void TSys_DM::AddPBXConRecord(const TPBXConRecord &r) {
  m_pending.Append({u"PBXConRecords"_s,
                    {u"Caller"_s, u"Called"_s, u"assPhone"_s, u"startTime"_s, u"stopTime"_s,
                     u"IOFlag"_s, u"RecType"_s, u"assType"_s},
                    {r.Caller, r.Called, r.assPhone, DateValue(r.startTime), DateValue(r.stopTime),
                     r.IOFlag, r.RecType, r.assType}});
}

void TSys_DM::AddMoringCallLog(const TMoringCallLog &r) {
  TPendingRow row{u"MoringCallLog"_s,
                    {u"RoomNo"_s, u"Ext"_s, u"CreateTime"_s, u"MoringCallTime"_s, u"State"_s},
                    {r.RoomNo, r.Ext, DateValue(r.CreateTime), DateValue(r.MoringCallTime),
                     r.State}};
  if (r.Attempt > 0) {
    row.Columns << u"Attempt"_s;
    row.Values << r.Attempt;
  }
  m_pending.Append(row);
}

void TSys_DM::AddRoomHistory(const TRoomHistory &r) {
  m_pending.Append({u"RoomHistory"_s,
                    {u"ActTime"_s, u"RoomNo"_s, u"Ext"_s, u"Action"_s, u"Operator"_s},
                    {DateValue(r.ActTime), r.RoomNo, r.Ext, r.Action, r.Operator}});
}

void TSys_DM::Execute(const QString &jet) {
  const QString sql = TranslateJet(jet, m_target);
  if (HasSecondStatement(sql))
    throw EDatabaseError(u"Refused: more than one statement, or a NUL in it ["_s +
                         QString(jet).replace(QChar(0), u"\\0"_s).left(160) + u']');
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql)) {
    if (m_link.CheckLost())
      throw EStoreAway(m_link.AwayText());
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + jet.simplified().left(160) +
                         u']');
  }
}
