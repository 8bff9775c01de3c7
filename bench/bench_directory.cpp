// The directory's costs on a store that has run for years: storing one call
// with a million calls logged, and looking a caller up in a book of a hundred
// thousand contacts, both once per ring.
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int kLoggedCalls = 1'000'000;
constexpr int kContacts = 100'000;

// One store for every benchmark, filled once, in one transaction per table.
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

    db.transaction();
    QSqlQuery contacts(db);
    contacts.prepare(
        u"INSERT INTO MainInfo (Name, Phone1, MobilePhone, Company) VALUES (?,?,?,?)"_s);
    for (int i = 0; i < kContacts; ++i) {
      contacts.bindValue(0, u"客户%1"_s.arg(i));
      // Every tenth an internal extension, the rest outside lines.
      contacts.bindValue(1, i % 10 == 0
                                ? u"8%1"_s.arg(i % 1000, 3, 10, QLatin1Char('0'))
                                : u"021%1"_s.arg(i * 37 % 100'000'000, 8, 10, QLatin1Char('0')));
      contacts.bindValue(2, u"138%1"_s.arg(i * 7919 % 100'000'000, 8, 10, QLatin1Char('0')));
      contacts.bindValue(3, u"公司%1"_s.arg(i % 500));
      contacts.exec();
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

// A long outside number that one contact holds, and one nobody holds.
static void BM_ShowCallerInfo_100k_Found(benchmark::State &state) {
  TDirectoryPages &pages = Store().pages;
  const QString number = u"021%1"_s.arg(4321 * 37 % 100'000'000, 8, 10, QLatin1Char('0'));
  for (auto _ : state)
    pages.ShowCallerInfo(u"Phone1"_s, number);
  state.SetLabel(pages.CurrentConID == -1 ? "not found" : "found");
}
BENCHMARK(BM_ShowCallerInfo_100k_Found)->Unit(benchmark::kMillisecond);

static void BM_ShowCallerInfo_100k_Unknown(benchmark::State &state) {
  TDirectoryPages &pages = Store().pages;
  for (auto _ : state)
    pages.ShowCallerInfo(u"Phone1"_s, u"13712345678"_s);
}
BENCHMARK(BM_ShowCallerInfo_100k_Unknown)->Unit(benchmark::kMillisecond);

// An internal extension: the short statement.
static void BM_ShowCallerInfo_100k_Internal(benchmark::State &state) {
  TDirectoryPages &pages = Store().pages;
  for (auto _ : state)
    pages.ShowCallerInfo(u"Phone1"_s, u"8123"_s);
}
BENCHMARK(BM_ShowCallerInfo_100k_Internal)->Unit(benchmark::kMillisecond);
