#include "directory/BoundQuery.h"

#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

using namespace Qt::StringLiterals;

TBoundRows SelectBound(const QString &sql, const QVariantMap &values) {
  if (Sys_DM().PendingWrites().Waiting() > 0)
    Sys_DM().PendingWrites().Flush();
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  if (!q.prepare(sql))
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + sql.simplified().left(160) +
                         u']');
  for (auto it = values.begin(); it != values.end(); ++it)
    q.bindValue(u':' + it.key(), it.value());
  if (!q.exec())
    throw EDatabaseError(q.lastError().text().trimmed() + u" ["_s + sql.simplified().left(160) +
                         u']');
  TBoundRows out;
  const int columns = q.record().count();
  while (q.next()) {
    QVariantList row;
    row.reserve(columns);
    for (int c = 0; c < columns; ++c)
      row << q.value(c);
    out.Rows << row;
  }
  return out;
}
