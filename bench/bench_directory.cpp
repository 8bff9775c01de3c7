// The directory's costs on a store that has run for years: storing one call
// with a million calls logged, and looking a caller up in books of up to a
// million contacts, both once per ring.
#include "ContactBook.h"
#include "RawStore.h"
#include "directory/DirectoryPages.h"
#include "directory/Query.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <map>

using namespace Qt::StringLiterals;

namespace {
constexpr int kLoggedCalls = 1'000'000;

// The call log's store, filled once, in one transaction.
struct FilledStore {
  QTemporaryDir home;
  TDirectoryPages pages;

  FilledStore() {
    SetAppPath(home.path());
    SysConfig().DBFile.clear();
    Sys_DM().DataModuleCreate();
    QSqlDatabase db = StoreConnection();

    db.transaction();
    QSqlQuery calls(db);
    calls.prepare(u"INSERT INTO conRecords (TelNos, DateTime, State) VALUES (?,?,?)"_s);
    const QDateTime start(QDate(2023, 1, 1), QTime(0, 0));
    for (int i = 0; i < kLoggedCalls; ++i) {
      calls.bindValue(0, u"139%1"_s.arg(i % 100'000'000, 8, 10, QLatin1Char('0')));
      // Spread over a year: about one call every half minute.
      calls.bindValue(1, start.addSecs(qint64(i) * 31).toString(u"yyyy-MM-dd hh:mm:ss"_s));
      calls.bindValue(2, 1 + i % 3);
      calls.exec();
    }
    db.commit();
  }
};

FilledStore &Store() {
  static FilledStore store;
  return store;
}
} // namespace

static void BM_AddConRecord_1M(benchmark::State &state) {
  TDirectoryPages &pages = Store().pages;
  for (auto _ : state)
    benchmark::DoNotOptimize(pages.AddConRecord(u"13900001111"_s, 1));
}
BENCHMARK(BM_AddConRecord_1M)->Unit(benchmark::kMillisecond);

// The floor: the same row inserted straight on SQLite, committed on its own.
static void BM_AddConRecord_1MFloor(benchmark::State &state) {
  Store();
  RawStore raw(Sys_DM().FileName());
  const QString insert = u"INSERT INTO conRecords (TelNos, State, DateTime) "
                         u"VALUES ('13900001111', 1, '%1')"_s.arg(FormatFull(Now()));
  for (auto _ : state)
    benchmark::DoNotOptimize(raw.Exec(insert));
}
BENCHMARK(BM_AddConRecord_1MFloor)->Unit(benchmark::kMillisecond);

// The caller lookups at 10k, 100k and 1M contacts, through the key table and,
// as the baseline in the same run, as the plain statements that read every
// contact. Each size has its own store, filled once.
namespace {
struct Book {
  QTemporaryDir dir;
  QString file;
};

void OpenBook(int contacts) {
  static std::map<int, Book> books;
  static int open = 0;
  if (open == contacts)
    return;
  Book &book = books[contacts];
  if (book.file.isEmpty()) {
    book.file = book.dir.filePath(u"book.db"_s);
    SysConfig().DBFile.clear();
    SetAppPath(book.dir.path());
    Sys_DM().DataModuleCreate();
    QSqlDatabase db = StoreConnection();
    FillContacts(db, contacts);
    book.file = Sys_DM().FileName();
  }
  SysConfig().DBFile = book.file;
  Sys_DM().DataModuleCreate();
  open = contacts;
}

// A ring's lookup for a number one contact holds (what the call page shows),
// and the call-list row's stricter match for it.
void Lookup(benchmark::State &state, LookupPlan plan) {
  OpenBook(int(state.range(0)));
  const QString number = OutsideNumber(4321);
  TADOQuery q;
  for (auto _ : state) {
    Sys_DM().OpenSQL(CallerLookupSQL(u"Phone1"_s, number, plan), q);
    Sys_DM().OpenSQL(CallTailSQL(u"Phone1"_s, number, plan), q);
  }
  state.SetLabel(q.IsEmpty() ? "not found" : "found");
}

// An internal extension that nobody holds: the short statement.
void LookupInternal(benchmark::State &state, LookupPlan plan) {
  OpenBook(int(state.range(0)));
  TADOQuery q;
  for (auto _ : state)
    Sys_DM().OpenSQL(CallerLookupSQL(u"Phone1"_s, u"8123"_s, plan), q);
}
} // namespace

static void BM_CallerLookup(benchmark::State &state) {
  Lookup(state, LookupPlan::Indexed);
}
static void BM_CallerLookup_Plain(benchmark::State &state) {
  Lookup(state, LookupPlan::Plain);
}
static void BM_CallerLookup_Internal(benchmark::State &state) {
  LookupInternal(state, LookupPlan::Indexed);
}
static void BM_CallerLookup_Internal_Plain(benchmark::State &state) {
  LookupInternal(state, LookupPlan::Plain);
}
BENCHMARK(BM_CallerLookup)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CallerLookup_Plain)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CallerLookup_Internal)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CallerLookup_Internal_Plain)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
