#pragma once

#include "directory/StoreError.h"
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
  // A server's driver knows no last insert id; there the row says its own.
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  q.prepare(
      QStringLiteral("INSERT INTO MainInfo (Name, Phone1, MobilePhone, Company, IDCard, Memo) "
                     "VALUES (?,?,?,?,?,?)") +
      (server ? QStringLiteral(" RETURNING ID") : QString()));
  for (const QString &value : {name, phone, mobile, company, idCard, memo})
    q.addBindValue(value.isNull() ? QVariant() : QVariant(value));
  if (!q.exec())
    qFatal("insert failed");
  return server ? (q.next() ? q.value(0).toInt() : 0) : q.lastInsertId().toInt();
}

// Opens the store as the console's start does; the refusal's words, or empty
// when it opened.
inline QString StartError() {
  try {
    Sys_DM().DataModuleCreate();
  } catch (const EDatabaseError &e) {
    return e.Message();
  }
  return {};
}
