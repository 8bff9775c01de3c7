#pragma once

#include "directory/JetSql.h"
#include "directory/PendingWrites.h"
#include "directory/Query.h"
#include "directory/StoreLink.h"

#include <QSqlDatabase>
#include <QString>

// One row of the exchange's call records as received.
struct TPBXConRecord {
  qint32 ID = 0;
  QString Caller;
  QString Called;
  qint32 Unused1 = 0;
  TDateTime startTime;
  TDateTime stopTime;
  TDateTime Unused2;
  qint32 assType = 0;
  QString assPhone;
  qint32 IOFlag = 0;
  qint32 RecType = 0;
};

// One row of the wake-up call log.
struct TMoringCallLog {
  qint32 ID = 0;
  QString RoomNo;
  QString Ext;
  qint32 Unused1 = 0;
  TDateTime CreateTime;
  TDateTime MoringCallTime;
  qint32 State = 0;
  qint32 Unused2 = 0;
  // The front desk's count: 1 for the wake-up the operator set, 2.. for the
  // console's retries after a failure; 0 leaves the column empty.
  qint32 Attempt = 0;
};

// One row of the front desk's room history: a room checked in or out.
struct TRoomHistory {
  TDateTime ActTime;
  QString RoomNo;
  QString Ext;
  QString Action;   // "入住" or "退房"
  QString Operator; // the console's own extension
};

// The data module: one SQLite connection for the whole run, the schema check at
// start, and the few shared operations on it. The windows keep their own queries
// on the same connection.
class TSys_DM {
public:
  TSys_DM();
  ~TSys_DM();

  static constexpr char16_t kConnectionName[] = u"Sys_ADOConn";
  // The caller key of a number too long to have its runs of seven kept: the
  // lookups always read the contacts that have it.
  static constexpr char16_t kCallerKeyLong[] = u"#long#";
  // The call records' index in the order the record view pages them.
  static constexpr char16_t kRecordPageIndex[] = u"PBXConRecords_Pages";
  // The version of the store's layout this console writes, kept in the
  // store's TrunkdeskStore table. A store of a higher version was set up by a
  // newer console and is refused untouched.
  static constexpr int kStoreVersion = 1;
  static constexpr char16_t kVersionTable[] = u"TrunkdeskStore";
  // On a shared store: one row per call record the exchange pushed, however
  // many desks received and stamped it (an exclusion constraint: the same
  // columns, stamps less than a few seconds apart).
  static constexpr char16_t kRecordOnceIndex[] = u"PBXConRecords_Once";

  // Opens the file the settings name when it exists, else Database/Notes_DB.db
  // below the program folder (made if missing), and checks the schema. A failure
  // raises EDatabaseError; the console goes on without a checked store.
  void DataModuleCreate();
  void DBinit();
  bool Connected() const;
  // The SQLite file, or for a shared store "user@host:port/database".
  QString FileName() const { return m_fileName; }
  // The dialect the open store speaks: SQLite, or PostgreSQL when [DB]
  // Driver=QPSQL. Every statement goes through TranslateJet with it.
  SqlTarget Target() const { return m_target; }

  bool TableExists(const QString &table);
  bool FieldExists(const QString &table, const QString &field);
  void OpenSQL(const QString &sql, TADOQuery &query);
  // One page of a search, newest first by `order` (a list of columns, each with
  // its direction, ending in a unique one so that pages neither overlap nor
  // skip a row).
  static QString BuildPageSQL(int pageSize, int page, const QString &table,
                              const QString &condition,
                              const QString &order = QStringLiteral("id desc"));
  int GetRecordCount(const QString &table, const QString &condition);
  // The appends of received records: they never wait for the store and are
  // never lost (see TPendingWrites). A read through the store sees them.
  void AddPBXConRecord(const TPBXConRecord &record);
  void AddMoringCallLog(const TMoringCallLog &record);
  void AddRoomHistory(const TRoomHistory &record);
  TPendingWrites &PendingWrites() { return m_pending; }
  // The shared store's connection through the shift and other desks' changes.
  TStoreLink &Link() { return m_link; }

  // Runs one schema or data statement (Jet dialect) on the connection.
  void Execute(const QString &jet);

  TADOQuery mainADOQuery{QStringLiteral("mainADOQuery")};
  TADOQuery ADOQuery_Temp{QStringLiteral("ADOQuery_Temp")};

  // The statement texts the settings window holds for three tables.
  static const QString Memo_SQL_Exts;
  static const QString Memo_SQL_PBXConRecords;
  static const QString Memo_SQL_MoringCallLog;

private:
  void OpenServer();
  void CheckStoreIsOurs();
  void ServerSession();
  QString ReopenServer();

  QString m_fileName;
  SqlTarget m_target = SqlTarget::Sqlite;
  bool m_schemaChecked = false;
  TPendingWrites m_pending;
  TStoreLink m_link;
};

// The process-wide data module, and its connection for the queries.
TSys_DM &Sys_DM();
QSqlDatabase StoreConnection();
