#pragma once

#include "directory/SysDM_Unit.h"

#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QtGlobal>

// A contact written straight into the store, past the code under test; returns
// its ID.
inline int StoreContact(const QString &name, const QString &phone, const QString &mobile = {},
                        const QString &company = {}, const QString &idCard = {},
                        const QString &memo = {}) {
  QSqlQuery q(StoreConnection());
  q.prepare(
      QStringLiteral("INSERT INTO MainInfo (Name, Phone1, MobilePhone, Company, IDCard, Memo) "
                     "VALUES (?,?,?,?,?,?)"));
  for (const QString &value : {name, phone, mobile, company, idCard, memo})
    q.addBindValue(value.isNull() ? QVariant() : QVariant(value));
  if (!q.exec())
    qFatal("insert failed");
  return q.lastInsertId().toInt();
}
