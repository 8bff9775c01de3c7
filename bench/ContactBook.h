// The contact book of the lookup benchmarks: every tenth contact an internal
// extension, the rest outside lines, each with a mobile number; written in
// one transaction on the store's connection.
#pragma once

#include <QLatin1Char>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

inline QString OutsideNumber(int i) {
  return QStringLiteral("021%1").arg(i * 37 % 100'000'000, 8, 10, QLatin1Char('0'));
}

inline void FillContacts(QSqlDatabase db, int contacts) {
  db.transaction();
  QSqlQuery q(db);
  q.prepare(QStringLiteral("INSERT INTO MainInfo (Name, Phone1, MobilePhone, Company) VALUES (?,?,?,?)"));
  for (int i = 0; i < contacts; ++i) {
    q.bindValue(0, QStringLiteral("客户%1").arg(i));
    q.bindValue(1, i % 10 == 0 ? QStringLiteral("8%1").arg(i % 1000, 3, 10, QLatin1Char('0'))
                               : OutsideNumber(i));
    q.bindValue(2, QStringLiteral("138%1").arg(i * 7919 % 100'000'000, 8, 10, QLatin1Char('0')));
    q.bindValue(3, QStringLiteral("公司%1").arg(i % 500));
    q.exec();
  }
  db.commit();
}
