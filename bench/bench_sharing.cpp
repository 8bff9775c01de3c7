// A desk's change seen at another desk: from the other desk's commit of a
// contact to this desk's announcement of it (the views read again on it), on
// a throwaway server. Beside it the floor, one statement's round trip to the
// same server, in the same run. The goal is well under a second.
#include "common/PgServer.h"
#include "directory/SysDM_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
struct TwoDesks {
  PgServer server;
  QTemporaryDir home;
  QSqlDatabase other;
  TwoDesks() {
    if (!server.Running())
      qFatal("The PostgreSQL server did not start: %s", qPrintable(server.Error()));
    SetAppPath(home.path());
    TSysConfig &c = SysConfig();
    c.DBDriver = u"QPSQL"_s;
    c.DBHost = server.Host();
    c.DBPort = server.Port();
    c.DBDatabase = server.Database();
    c.DBUser = server.User();
    Sys_DM().DataModuleCreate();
    other = QSqlDatabase::addDatabase(u"QPSQL"_s, u"other_desk"_s);
    other.setHostName(server.Host());
    other.setPort(server.Port());
    other.setDatabaseName(server.Database());
    other.setUserName(server.User());
    if (!other.open() || !QSqlQuery(other).exec(u"INSERT INTO MainInfo (Name) VALUES ('x')"_s))
      qFatal("The other desk can't write");
  }
};

TwoDesks &Desks() {
  static TwoDesks desks;
  return desks;
}

void BM_StatementRoundTrip(benchmark::State &state) {
  QSqlQuery q(Desks().other);
  for (auto _ : state)
    q.exec(u"SELECT 1"_s);
}
BENCHMARK(BM_StatementRoundTrip)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ChangeSeenAtOtherDesk(benchmark::State &state) {
  QSqlQuery q(Desks().other);
  bool seen = false;
  const auto connection = QObject::connect(&Sys_DM().Link(), &TStoreLink::tablesChanged,
                                           [&](const QStringList &) { seen = true; });
  int n = 0;
  for (auto _ : state) {
    seen = false;
    q.exec(u"UPDATE MainInfo SET Memo = '%1'"_s.arg(++n));
    QElapsedTimer clock;
    clock.start();
    while (!seen && clock.elapsed() < 5000)
      QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    if (!seen)
      state.SkipWithError("no announcement within 5 s");
  }
  QObject::disconnect(connection);
}
BENCHMARK(BM_ChangeSeenAtOtherDesk)->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace
