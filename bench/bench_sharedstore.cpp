// The shared store beside the file, in one run: the same store (a year of
// 1,000,000 call records and a book of 100,000 contacts) in an SQLite file
// and, copied by --copy-store's own code, on a throwaway PostgreSQL server on
// this machine. Each operation runs through the console's own path on both;
// argument 0 is the file, 1 the server. The file is the floor.
#include "ContactBook.h"
#include "common/PgServer.h"
#include "directory/DirectoryPages.h"
#include "directory/JetSql.h"
#include "directory/Query.h"
#include "directory/StoreCopy.h"
#include "directory/SysDM_Unit.h"
#include "guest/PBXRecords.h"
#include "support/Clock.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QElapsedTimer>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr int kRecords = 1'000'000;
constexpr int kContacts = 100'000;
const TDateTime kYearStart = TDateTime::FromDate(QDate(2025, 11, 22));
const TDateTime kToday = kYearStart + 364;

// Page 10,000 of the whole table, newest first, as the page bar asks for it.
QString PageSQL() {
  return TSys_DM::BuildPageSQL(50, 10000, u"PBXConRecords"_s,
                               u"(1=1)  and ( (Caller like '%%' ) or (Called like '%%') ) "_s,
                               TPBXRecords().Frame_DataPage.PageOrder);
}

// Rows a statement yields straight through the driver, every column read:
// the backend's own cost without the console's cursor.
int Rows(const QString &sql) {
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  if (!q.exec(sql))
    return -1;
  int rows = 0;
  for (; q.next(); ++rows) {
    for (int c = 0, n = q.record().count(); c < n; ++c)
      benchmark::DoNotOptimize(q.value(c));
  }
  return rows;
}

struct Stores {
  QTemporaryDir home;
  PgServer server;
  QString file;
  TStoreServer database;

  Stores() {
    SetAppPath(home.path());
    SetClock([] { return (kToday + 0.5).ToQDateTime(); });
    if (!server.Running())
      qFatal("The PostgreSQL server did not start: %s", qPrintable(server.Error()));
    SysConfig().DBFile.clear();
    Sys_DM().DataModuleCreate();
    file = Sys_DM().FileName();
    {
      QSqlDatabase db = StoreConnection();
      QSqlQuery q(db);
      q.exec(u"WITH RECURSIVE c(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM c WHERE i < %1) "
             u"INSERT INTO PBXConRecords (Caller, Called, startTime, stopTime, assType, IOFlag, "
             u"RecType) SELECT 8000 + i * 7 % 3000, 13800000000 + i * 7919 % 100000000, "
             u"datetime(julianday('%2') + 365.0 * i / %3), "
             u"datetime(julianday('%2') + 365.0 * i / %3 + 90.0 / 86400), 0, i % 3, i % 10 FROM c"_s
                 .arg(kRecords - 1)
                 .arg(FormatFull(kYearStart))
                 .arg(kRecords));
      FillContacts(db, kContacts);
    }

    database = {server.Host(), server.Port(), server.Database(), server.User(), {}, {}};
    QElapsedTimer copy;
    copy.start();
    const QString failed = CopyStore({file, {}}, {{}, database}, {});
    if (!failed.isEmpty())
      qFatal("The copy onto the server failed: %s", qPrintable(failed));
    std::fprintf(stderr, "copied %d call records and %d contacts onto the server in %.1f s\n",
                 kRecords, kContacts, copy.elapsed() / 1000.0);
    // What the server's autovacuum does within a minute of a bulk load: the
    // planner's statistics, and the visibility map an index-only scan needs.
    database.ToConfig(SysConfig());
    Sys_DM().DataModuleCreate();
    QSqlQuery(StoreConnection()).exec(u"VACUUM ANALYZE"_s);
    if (qEnvironmentVariableIsSet("TRUNKDESK_BENCH_EXPLAIN"))
      Explain();
  }

  // The server's plans of the statements measured below, on standard error.
  static void Explain() {
    TPBXRecords records;
    const QString condition = records.PBX_BuildCondition();
    const QString number = OutsideNumber(4321);
    for (const QString &jet :
         {u"select count(*) as recordCount from PBXConRecords where %1 "_s.arg(condition),
          TSys_DM::BuildPageSQL(50, 1, u"PBXConRecords"_s, condition,
                                records.Frame_DataPage.PageOrder),
          PageSQL(), CallerLookupSQL(u"Phone1"_s, number, LookupPlan::Indexed),
          CallTailSQL(u"Phone1"_s, number, LookupPlan::Indexed)}) {
      QSqlQuery q(StoreConnection());
      const QString sql = TranslateJet(jet, SqlTarget::Postgres);
      q.exec(u"EXPLAIN ANALYZE "_s + sql);
      std::fprintf(stderr, "\n%s\n", qPrintable(sql));
      while (q.next())
        std::fprintf(stderr, "  %s\n", qPrintable(q.value(0).toString()));
    }
  }
};

// Opens the store of the backend (0 the file, 1 the server) through the
// console's start; the figures run on whichever is open.
void Use(benchmark::State &state) {
  static std::unique_ptr<Stores> stores = std::make_unique<Stores>();
  static int open = -1;
  const int backend = int(state.range(0));
  state.SetLabel(backend == 0 ? "SQLite file" : "PostgreSQL server");
  if (open == backend)
    return;
  if (backend == 0) {
    SysConfig().DBDriver.clear();
    SysConfig().DBFile = stores->file;
  } else {
    stores->database.ToConfig(SysConfig());
  }
  Sys_DM().DataModuleCreate();
  open = backend;
}
} // namespace

// The call-record page as the console opens it: today's count and page 1.
static void BM_SharedStartupSearch(benchmark::State &state) {
  Use(state);
  TPBXRecords records;
  for (auto _ : state)
    records.SpeedButton_FindClick();
  state.counters["rows"] = records.Frame_DataPage.RecordCount;
}
BENCHMARK(BM_SharedStartupSearch)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Page 10,000 of the whole table, newest first, as the page bar asks for it.
static void BM_SharedPage10000(benchmark::State &state) {
  Use(state);
  const QString jet = TSys_DM::BuildPageSQL(
      50, 10000, u"PBXConRecords"_s, u"(1=1)  and ( (Caller like '%%' ) or (Called like '%%') ) "_s,
      TPBXRecords().Frame_DataPage.PageOrder);
  TADOQuery q;
  for (auto _ : state)
    Sys_DM().OpenSQL(jet, q);
  state.counters["rows"] = q.RecordCount();
}
BENCHMARK(BM_SharedPage10000)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// A ring's caller lookup and the call-list row's match over 100,000 contacts.
static void BM_SharedCallerLookup(benchmark::State &state) {
  Use(state);
  const QString number = OutsideNumber(4321);
  TADOQuery q;
  for (auto _ : state) {
    Sys_DM().OpenSQL(CallerLookupSQL(u"Phone1"_s, number, LookupPlan::Indexed), q);
    Sys_DM().OpenSQL(CallTailSQL(u"Phone1"_s, number, LookupPlan::Indexed), q);
  }
  state.counters["found"] = q.IsEmpty() ? 0 : 1;
}
BENCHMARK(BM_SharedCallerLookup)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Where the server's time goes, each beside the same on the file.
//
// The statements of the start-up search, the page and the lookup straight
// through the driver, without the cursor: what the backend itself costs.
static void BM_SharedStatementsAlone(benchmark::State &state) {
  Use(state);
  const SqlTarget target = state.range(0) == 0 ? SqlTarget::Sqlite : SqlTarget::Postgres;
  TPBXRecords records;
  const QString condition = records.PBX_BuildCondition();
  const QString number = OutsideNumber(4321);
  QStringList statements;
  if (state.range(1) == 0)
    statements = {u"select count(*) as recordCount from PBXConRecords where %1 "_s.arg(condition),
                  TSys_DM::BuildPageSQL(50, 1, u"PBXConRecords"_s, condition,
                                        records.Frame_DataPage.PageOrder)};
  else if (state.range(1) == 1)
    statements = {PageSQL()};
  else
    statements = {CallerLookupSQL(u"Phone1"_s, number), CallTailSQL(u"Phone1"_s, number)};
  for (QString &s : statements)
    s = TranslateJet(s, target);
  // On the server, the same text with like for ilike: the same rows where the
  // pattern holds no letter, as here.
  if (state.range(2) == 1)
    for (QString &s : statements)
      s.replace(u" ilike "_s, u" like "_s);
  int rows = 0;
  for (auto _ : state) {
    rows = 0;
    for (const QString &s : statements)
      rows += Rows(s);
  }
  state.counters["rows"] = rows;
  static const char *const kWhat[] = {"start-up search", "page 10,000", "caller lookup"};
  state.SetLabel(std::string(kWhat[state.range(1)]) +
                 (state.range(0) == 0 ? ", SQLite file" : ", PostgreSQL server") +
                 (state.range(2) == 1 ? ", like for ilike" : ""));
}
BENCHMARK(BM_SharedStatementsAlone)
    ->ArgsProduct({{0, 1}, {0, 1, 2}, {0}})
    ->Args({1, 0, 1})
    ->Args({1, 1, 1})
    ->Unit(benchmark::kMillisecond);

// The column probe the cursor runs after every read that has a base table,
// to know its date columns: the statement TADOQuery::Load sends, for the
// contact book.
static void BM_SharedCursorColumnProbe(benchmark::State &state) {
  Use(state);
  // 2: the same answer from the server's catalogue instead of its
  // information_schema views.
  const QString probe = state.range(0) == 0 ? u"PRAGMA table_info(MainInfo)"_s
                        : state.range(1) == 0
                            ? u"SELECT lower(column_name) FROM information_schema.columns WHERE "
                              u"table_schema = current_schema() AND table_name = "
                              u"lower('MainInfo') AND domain_name = 'datetext'"_s
                            : u"SELECT lower(a.attname) FROM pg_attribute a JOIN pg_type t ON "
                              u"t.oid = a.atttypid WHERE a.attrelid = 'maininfo'::regclass AND "
                              u"t.typname = 'datetext' AND NOT a.attisdropped"_s;
  int rows = 0;
  for (auto _ : state)
    rows = Rows(probe);
  state.counters["rows"] = rows;
  if (state.range(1) == 1)
    state.SetLabel("PostgreSQL server, from pg_attribute");
}
BENCHMARK(BM_SharedCursorColumnProbe)
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond);

// 1,000 call records as the exchange pushes them, appended and written by the
// console's pending writes (500 a transaction) until none waits. They are
// dated tomorrow and run last, so the searches above see the same rows.
static void BM_SharedAppend1000(benchmark::State &state) {
  Use(state);
  TPendingWrites &pending = Sys_DM().PendingWrites();
  TPBXConRecord r;
  r.Called = u"8000"_s;
  r.IOFlag = 1;
  int i = 0;
  for (auto _ : state) {
    for (int k = 0; k < 1000; ++k, ++i) {
      r.Caller = QString::number(13900000000LL + i);
      r.startTime = kToday + 1 + i / 86400.0;
      Sys_DM().AddPBXConRecord(r);
    }
    while (pending.Waiting() > 0)
      pending.Flush();
  }
}
BENCHMARK(BM_SharedAppend1000)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
