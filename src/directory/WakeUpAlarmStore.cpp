#include "directory/WakeUpAlarmStore.h"

#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "support/Log.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {
QVariant DateValue(TDateTime value) {
  return value.IsZero() ? QVariant() : QVariant(FormatFull(value));
}

TDateTime DateOf(const QVariant &value) {
  TDateTime t;
  if (!value.isNull() && !TryStrToDateTime(value.toString(), &t))
    t = TDateTime();
  return t;
}

QSqlQuery Run(const QString &sql, const QVariantList &values = {}) {
  QSqlQuery q(StoreConnection());
  if (!q.prepare(sql))
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + sql.left(160) + u']');
  for (const QVariant &v : values)
    q.addBindValue(v);
  if (!q.exec())
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + sql.left(160) + u']');
  return q;
}
} // namespace

namespace WakeUpAlarmStore {

void EnsureSchema() {
  TSys_DM &dm = Sys_DM();
  if (!dm.TableExists(QString::fromUtf16(kTable))) {
    dm.Execute(u"CREATE TABLE WakeUpAlarms (ID integer IDENTITY(1,1) PRIMARY KEY, "
               u"PortID integer, RoomNo varchar(50), Ext varchar(50), MoringCallTime date, "
               u"CreateTime date, Attempts integer, RetryTime date, AckTime date, "
               u"AckBy varchar(50))"_s);
    WriteLog(u"The store now keeps failed wake-ups until they are acknowledged"_s);
  }
  // Old log rows keep an empty attempt: they were first attempts, or unknown.
  if (!dm.FieldExists(u"MoringCallLog"_s, u"Attempt"_s))
    dm.Execute(u"Alter Table MoringCallLog Add [Attempt] integer"_s);
}

QList<TWakeUpAlarm> Open() {
  QSqlQuery q = Run(u"SELECT ID, PortID, RoomNo, Ext, MoringCallTime, CreateTime, Attempts, "
                    u"RetryTime FROM WakeUpAlarms WHERE AckTime IS NULL ORDER BY ID"_s);
  QList<TWakeUpAlarm> alarms;
  while (q.next()) {
    TWakeUpAlarm a;
    a.ID = q.value(0).toInt();
    a.PortID = q.value(1).toInt();
    a.RoomNo = q.value(2).toString();
    a.Ext = q.value(3).toString();
    a.MoringCallTime = DateOf(q.value(4));
    a.CreateTime = DateOf(q.value(5));
    a.Attempts = q.value(6).toInt();
    a.RetryTime = DateOf(q.value(7));
    alarms << a;
  }
  return alarms;
}

void Save(TWakeUpAlarm &a) {
  const QVariantList values = {a.PortID,
                               a.RoomNo,
                               a.Ext,
                               DateValue(a.MoringCallTime),
                               DateValue(a.CreateTime),
                               a.Attempts,
                               DateValue(a.RetryTime)};
  if (a.ID > 0) {
    Run(u"UPDATE WakeUpAlarms SET PortID=?, RoomNo=?, Ext=?, MoringCallTime=?, CreateTime=?, "
        u"Attempts=?, RetryTime=? WHERE ID=?"_s,
        values + QVariantList{a.ID});
    return;
  }
  // The server's driver knows no last insert id; there the row says its own.
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  QSqlQuery q = Run(u"INSERT INTO WakeUpAlarms (PortID, RoomNo, Ext, MoringCallTime, "
                    u"CreateTime, Attempts, RetryTime) VALUES (?, ?, ?, ?, ?, ?, ?)"_s +
                        (server ? u" RETURNING ID"_s : QString()),
                    values);
  a.ID = server ? (q.next() ? q.value(0).toInt() : 0) : q.lastInsertId().toInt();
}

void Acknowledge(const QList<qint32> &ids, TDateTime when, const QString &by) {
  if (ids.isEmpty()) {
    Run(u"UPDATE WakeUpAlarms SET AckTime=?, AckBy=? WHERE AckTime IS NULL"_s,
        {DateValue(when), by});
    return;
  }
  QSqlDatabase db = StoreConnection();
  db.transaction();
  try {
    for (const qint32 id : ids)
      Run(u"UPDATE WakeUpAlarms SET AckTime=?, AckBy=? WHERE ID=? AND AckTime IS NULL"_s,
          {DateValue(when), by, id});
  } catch (...) {
    db.rollback();
    throw;
  }
  db.commit();
}

} // namespace WakeUpAlarmStore
