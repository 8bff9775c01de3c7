#pragma once

// A store suite that includes this runs on the throwaway PostgreSQL server when
// TRUNKDESK_TEST_STORE=pg (CTest registers such suites a second time with it),
// and on SQLite files otherwise: the same tests, the same data rows. Every
// TestHome then starts from an empty database, as it starts from a new file.

#include "common/PgServer.h"
#include "common/TestHome.h"
#include "directory/SysDM_Unit.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <memory>

inline bool TestStoreIsPg() {
  return qEnvironmentVariable("TRUNKDESK_TEST_STORE") == QStringLiteral("pg");
}

namespace pgstore_detail {
inline std::unique_ptr<PgServer> &Server() {
  static std::unique_ptr<PgServer> server;
  return server;
}

inline void StopServer() {
  QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
  Server().reset();
}

inline void PointAtServer() {
  if (!Server()) {
    Server() = std::make_unique<PgServer>();
    qAddPostRoutine(StopServer);
  }
  PgServer &server = *Server();
  // Not a skip: a suite that can't reach its server has not shown anything.
  if (!server.Running())
    qFatal("The PostgreSQL test server did not start: %s", qPrintable(server.Error()));
  TSysConfig &c = SysConfig();
  c.DBDriver = QStringLiteral("QPSQL");
  c.DBHost = server.Host();
  c.DBPort = server.Port();
  c.DBDatabase = server.Database();
  c.DBUser = server.User();
  // The previous home's store goes; the next start makes the schema again.
  const QString name = QStringLiteral("pgstore_wipe");
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
    db.setHostName(server.Host());
    db.setPort(server.Port());
    db.setDatabaseName(server.Database());
    db.setUserName(server.User());
    QSqlQuery q(db);
    if (!db.open() || !q.exec(QStringLiteral("SET lock_timeout = '10s'")) ||
        !q.exec(QStringLiteral("SET client_min_messages = warning")) ||
        !q.exec(QStringLiteral("DROP SCHEMA public CASCADE")) ||
        !q.exec(QStringLiteral("CREATE SCHEMA public")))
      qFatal("Cannot empty the PostgreSQL test database: %s",
             qPrintable(db.lastError().text() + q.lastError().text()));
  }
  QSqlDatabase::removeDatabase(name);
}

inline const bool kInstalled = [] {
  if (TestStoreIsPg())
    TestHome::AfterReset() = PointAtServer;
  return true;
}();
} // namespace pgstore_detail
