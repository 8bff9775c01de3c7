// The store's speed goals: the first start's schema, and the record view over a
// year of call records (1,000,000 rows).
#include "directory/SysDM_Unit.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
constexpr int kRecords = 1000000;
// "Today" for the record view: the last day of the year of records.
const TDateTime kYearStart = TDateTime::FromDate(QDate(2025, 11, 22));
const TDateTime kToday = kYearStart + 365;

// The record view's default condition: the last seven days, every number.
QString DefaultCondition() {
  return u"(1=1)  and (startTime>=#%1 00::00::00#) "_s.arg(DateToStr(kToday - 7));
}

struct YearOfRecords {
  QTemporaryDir home;
  YearOfRecords() {
    SetAppPath(home.path());
    SysConfig().DBFile.clear();
    Sys_DM().DataModuleCreate();
    QSqlDatabase db = StoreConnection();
    db.transaction();
    QSqlQuery q(db);
    q.prepare(u"INSERT INTO PBXConRecords (Caller, Called, startTime, stopTime, assType, IOFlag, "
              u"RecType) "
              u"VALUES (?, ?, ?, ?, 0, 1, 0)"_s);
    for (int i = 0; i < kRecords; ++i) {
      const TDateTime start = kYearStart + 365.0 * i / kRecords;
      q.addBindValue(QString::number(8000 + i % 3000));
      q.addBindValue(QString::number(13800000000LL + i));
      q.addBindValue(FormatFull(start));
      q.addBindValue(FormatFull(start + 90.0 / 86400));
      q.exec();
    }
    db.commit();
  }
};

YearOfRecords &Records() {
  static std::unique_ptr<YearOfRecords> records = std::make_unique<YearOfRecords>();
  return *records;
}
} // namespace

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

static void BM_RecordCountLastWeek(benchmark::State &state) {
  Records();
  int count = 0;
  for (auto _ : state)
    count = Sys_DM().GetRecordCount(u"PBXConRecords"_s, DefaultCondition());
  state.counters["rows"] = count;
}
BENCHMARK(BM_RecordCountLastWeek)->Unit(benchmark::kMillisecond);

static void BM_FirstPageLastWeek(benchmark::State &state) {
  Records();
  TADOQuery q;
  for (auto _ : state)
    Sys_DM().OpenSQL(TSys_DM::BuildPageSQL(50, 1, u"PBXConRecords"_s, DefaultCondition()), q);
  state.counters["rows"] = q.RecordCount();
}
BENCHMARK(BM_FirstPageLastWeek)->Unit(benchmark::kMillisecond);

static void BM_Page10000WholeTable(benchmark::State &state) {
  Records();
  TADOQuery q;
  for (auto _ : state)
    Sys_DM().OpenSQL(TSys_DM::BuildPageSQL(50, 10000, u"PBXConRecords"_s, u"(1=1) "_s), q);
  state.counters["rows"] = q.RecordCount();
}
BENCHMARK(BM_Page10000WholeTable)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
