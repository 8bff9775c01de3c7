// The store's speed goals: the first start's schema, the record view's
// statements over a year of call records (1,000,000 and 5,000,000 rows), and
// call records arriving while another program holds the store for a minute.
// Each stands beside its floor, the same statements straight on SQLite
// (RawStore), in the same run.
#include "RawStore.h"
#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>

using namespace Qt::StringLiterals;

namespace {
// "Today" for the record view: the last day of the year of records.
const TDateTime kYearStart = TDateTime::FromDate(QDate(2025, 11, 22));
const TDateTime kToday = kYearStart + 364;
const QString kTable = u"PBXConRecords"_s;
// The order the record view pages in, and the one it paged in before.
const QString kViewOrder = u"startTime desc, ID desc"_s;
const QString kIdOrder = u"id desc"_s;

// The record view's condition with the number box empty, as it always takes
// part, and both date boxes set: `days` days up to the end of `last`.
QString ViewCondition(TDateTime last, int days) {
  return u"(1=1)  and ( (Caller like '%%' ) or (Called like '%%') )  and "
         u"(startTime>=#%1 00::00::00#)  and (startTime<=#%2 23::59::59#) "_s.arg(
             DateToStr(last - (days - 1)), DateToStr(last));
}
const QString kNoDates = u"(1=1)  and ( (Caller like '%%' ) or (Called like '%%') ) "_s;

// A year of call records, `millions` million rows, filled once in one
// statement; the store is (re)opened through the console's own start.
struct YearOfRecords {
  QTemporaryDir home;
  QString file;
};

void OpenYear(int millions) {
  static std::map<int, YearOfRecords> years;
  static int open = 0;
  if (open == millions)
    return;
  YearOfRecords &year = years[millions];
  SysConfig().DBFile.clear();
  if (year.file.isEmpty()) {
    SetAppPath(year.home.path());
    Sys_DM().DataModuleCreate();
    QSqlQuery q(StoreConnection());
    const int rows = millions * 1000000;
    q.exec(u"WITH RECURSIVE c(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM c WHERE i < %1) "
           u"INSERT INTO PBXConRecords (Caller, Called, startTime, stopTime, assType, IOFlag, "
           u"RecType) SELECT 8000 + i %% 3000, 13800000000 + i * 7919 %% 100000000, "
           u"datetime(julianday('%2') + 365.0 * i / %3), "
           u"datetime(julianday('%2') + 365.0 * i / %3 + 90.0 / 86400), 0, i %% 3, i %% 10 FROM c"_s
               .arg(rows - 1)
               .arg(FormatFull(kYearStart))
               .arg(rows)
               .replace(u"%%"_s, u"%"_s));
    year.file = Sys_DM().FileName();
  }
  SysConfig().DBFile = year.file;
  Sys_DM().DataModuleCreate();
  open = millions;
}

// The console's store, new, in `home`.
void OpenNewStore(const QTemporaryDir &home) {
  SetAppPath(home.path());
  SysConfig().DBFile.clear();
  Sys_DM().DataModuleCreate();
}

RawStore &Raw() {
  static std::unique_ptr<RawStore> raw;
  static QString file;
  if (file != Sys_DM().FileName()) {
    raw.reset();
    file = Sys_DM().FileName();
    raw = std::make_unique<RawStore>(file);
  }
  return *raw;
}

// The record view's statements: what each asks, and of which page.
struct Statement {
  QString condition;
  int page; // 0: the count
};
Statement Of(int which) {
  switch (which) {
  case 0:
    return {ViewCondition(kToday, 7), 0}; // count of the last seven days
  case 1:
    return {ViewCondition(kToday, 7), 1}; // their page 1
  case 2:
    return {ViewCondition(kYearStart + 180, 30), 10}; // page 10 of a 30-day range
  default:
    return {kNoDates, 10000}; // page 10,000 of the whole table
  }
}
const char *const kStatementNames[] = {"count of a week", "page 1 of a week", "page 10 of 30 days",
                                       "page 10,000 of all"};

QString JetOf(const Statement &s, const QString &order) {
  return s.page == 0
             ? u"select count(*) as recordCount from %1 where %2 "_s.arg(kTable, s.condition)
             : TSys_DM::BuildPageSQL(50, s.page, kTable, s.condition, order);
}

enum class Way { Console, Floor, IdOrder };

// range(0): millions of rows; range(1): the statement. The console runs it as
// the view does (translated, through the cursor); the floor runs the same
// translated text on RawStore; IdOrder is the view's statement as it was before
// it paged by start time. Counted: rows, and whether the engine sorts.
void RecordStatement(benchmark::State &state, Way way) {
  OpenYear(int(state.range(0)));
  const Statement s = Of(int(state.range(1)));
  const QString jet = JetOf(s, way == Way::IdOrder ? kIdOrder : kViewOrder);
  const QString sql = TranslateJet(jet);
  TADOQuery q;
  int rows = 0;
  for (auto _ : state) {
    if (way == Way::Floor) {
      rows = Raw().Rows(sql);
    } else if (s.page == 0) {
      rows = Sys_DM().GetRecordCount(kTable, s.condition);
    } else {
      Sys_DM().OpenSQL(jet, q);
      rows = q.RecordCount();
    }
  }
  state.counters["rows"] = rows;
  state.counters["temp_sort"] = Raw().Plan(sql).contains(u"TEMP B-TREE"_s) ? 1 : 0;
  state.SetLabel(kStatementNames[state.range(1)]);
}

void RecordArgs(benchmark::internal::Benchmark *b) {
  b->Unit(benchmark::kMillisecond);
  for (int millions : {1, 5})
    for (int which = 0; which < 4; ++which)
      b->Args({millions, which});
}
} // namespace

static void BM_RecordStatement(benchmark::State &state) {
  RecordStatement(state, Way::Console);
}
static void BM_RecordStatementFloor(benchmark::State &state) {
  RecordStatement(state, Way::Floor);
}
static void BM_RecordStatementIdOrder(benchmark::State &state) {
  RecordStatement(state, Way::IdOrder);
}
BENCHMARK(BM_RecordStatement)->Apply(RecordArgs);
BENCHMARK(BM_RecordStatementFloor)->Apply(RecordArgs);
BENCHMARK(BM_RecordStatementIdOrder)->Apply([](benchmark::internal::Benchmark *b) {
  b->Unit(benchmark::kMillisecond);
  for (int millions : {1, 5})
    for (int which = 1; which < 4; ++which)
      b->Args({millions, which});
});

static void BM_DBinitNewFile(benchmark::State &state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto home = std::make_unique<QTemporaryDir>();
    SetAppPath(home->path());
    SysConfig().DBFile.clear();
    state.ResumeTiming();
    Sys_DM().DataModuleCreate();
    state.PauseTiming();
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
    home.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_DBinitNewFile)->Unit(benchmark::kMillisecond)->Iterations(5);

// The floor of the first start: a new file in the same journal mode, the
// three tables whose texts the settings window holds and the 3072 Exts rows in
// one transaction, straight on SQLite.
static void BM_DBinitNewFileFloor(benchmark::State &state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto home = std::make_unique<QTemporaryDir>();
    state.ResumeTiming();
    {
      RawStore raw(home->filePath(u"floor.db"_s));
      raw.Exec(u"PRAGMA journal_mode=WAL"_s);
      raw.Exec(u"PRAGMA synchronous=NORMAL"_s);
      for (const QString &table : {TSys_DM::Memo_SQL_Exts, TSys_DM::Memo_SQL_PBXConRecords,
                                   TSys_DM::Memo_SQL_MoringCallLog})
        raw.Exec(TranslateJet(table));
      raw.Exec(u"BEGIN"_s);
      sqlite3_stmt *insert = nullptr;
      sqlite3_prepare_v2(raw.Handle(), "INSERT INTO Exts (portID) values(?)", -1, &insert, nullptr);
      for (int port = 0; port < 3072; ++port) {
        sqlite3_bind_int(insert, 1, port);
        sqlite3_step(insert);
        sqlite3_reset(insert);
      }
      sqlite3_finalize(insert);
      raw.Exec(u"COMMIT"_s);
    }
    state.PauseTiming();
    home.reset();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_DBinitNewFileFloor)->Unit(benchmark::kMillisecond)->Iterations(5);

// A minute's lock at 5,000 call records a second: 300,000 records, a turn of
// the event loop every 100 of them. Counted: records lost, and the longest the
// main thread was held by one append, one turn's write attempt, and one turn of
// writing them afterwards (the goal is no loss and nothing over 50 ms).
static void BM_MinuteOfLockedStore(benchmark::State &state) {
  using Clock = std::chrono::steady_clock;
  const auto ms = [](Clock::duration d) {
    return std::chrono::duration<double, std::milli>(d).count();
  };
  constexpr int kRecordsInAMinute = 300000;
  for (auto _ : state) {
    QTemporaryDir home;
    OpenNewStore(home);
    TPendingWrites &pending = Sys_DM().PendingWrites();
    double longestAppend = 0;
    double longestTurn = 0;
    double longestDrainTurn = 0;
    {
      QSqlDatabase holder = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"holder"_s);
      holder.setDatabaseName(Sys_DM().FileName());
      holder.open();
      QSqlQuery(holder).exec(u"BEGIN EXCLUSIVE"_s);
      TPBXConRecord r;
      r.Called = u"8000"_s;
      r.IOFlag = 1;
      for (int i = 0; i < kRecordsInAMinute; ++i) {
        r.Caller = QString::number(13800000000LL + i);
        r.startTime = TDateTime(46000 + i / 86400.0);
        auto start = Clock::now();
        Sys_DM().AddPBXConRecord(r);
        longestAppend = std::max(longestAppend, ms(Clock::now() - start));
        if (i % 100 == 99) {
          start = Clock::now();
          pending.Flush();
          longestTurn = std::max(longestTurn, ms(Clock::now() - start));
        }
      }
      QSqlQuery(holder).exec(u"ROLLBACK"_s);
      holder.close();
    }
    QSqlDatabase::removeDatabase(u"holder"_s);
    state.counters["spilled"] = double(pending.Spilled());
    while (pending.Waiting() > 0) {
      const auto start = Clock::now();
      pending.Flush();
      longestDrainTurn = std::max(longestDrainTurn, ms(Clock::now() - start));
    }
    QSqlQuery count(StoreConnection());
    count.exec(u"select count(*) from PBXConRecords"_s);
    count.next();
    state.counters["lost"] = kRecordsInAMinute - count.value(0).toInt();
    state.counters["max_append_ms"] = longestAppend;
    state.counters["max_locked_turn_ms"] = longestTurn;
    state.counters["max_drain_turn_ms"] = longestDrainTurn;
  }
}
BENCHMARK(BM_MinuteOfLockedStore)->Unit(benchmark::kMillisecond)->Iterations(1);

// The floor of the writing afterwards: the same 300,000 records written by a
// turn's worth (TPendingWrites::kRowsPerTurn) in a transaction, straight on
// SQLite into the console's schema, nothing held. Counted: the longest turn.
static void BM_MinuteOfRecordsFloor(benchmark::State &state) {
  using Clock = std::chrono::steady_clock;
  constexpr int kRecordsInAMinute = 300000;
  for (auto _ : state) {
    QTemporaryDir home;
    OpenNewStore(home);
    RawStore raw(Sys_DM().FileName());
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(raw.Handle(),
                       "INSERT INTO PBXConRecords (Caller, Called, startTime, IOFlag) "
                       "VALUES (?, '8000', ?, 1)",
                       -1, &insert, nullptr);
    double longestTurn = 0;
    for (int i = 0; i < kRecordsInAMinute;) {
      const auto start = Clock::now();
      raw.Exec(u"BEGIN"_s);
      for (int k = 0; k < TPendingWrites::kRowsPerTurn && i < kRecordsInAMinute; ++k, ++i) {
        const QByteArray caller = QByteArray::number(13800000000LL + i);
        const QByteArray time = FormatFull(TDateTime(46000 + i / 86400.0)).toUtf8();
        sqlite3_bind_text(insert, 1, caller.constData(), int(caller.size()), SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 2, time.constData(), int(time.size()), SQLITE_TRANSIENT);
        sqlite3_step(insert);
        sqlite3_reset(insert);
      }
      raw.Exec(u"COMMIT"_s);
      longestTurn = std::max(
          longestTurn, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    sqlite3_finalize(insert);
    state.counters["max_turn_ms"] = longestTurn;
  }
}
BENCHMARK(BM_MinuteOfRecordsFloor)->Unit(benchmark::kMillisecond)->Iterations(1);
