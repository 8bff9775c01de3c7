// The record views over a year of call records (1,000,000 rows): the start-up
// search, a page within two dates, a search by part of a number over every row,
// and the export of 100,000 rows. Each stands beside its floor: the same
// statements run straight on SQLite (RawStore), rows read and dropped.
#include "RawStore.h"
#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "guest/PBXRecords.h"
#include "guest/RecordExport.h"
#include "support/Clock.h"
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
const TDateTime kYearStart = TDateTime::FromDate(QDate(2025, 11, 22));
const TDateTime kToday = kYearStart + 364;

struct YearOfRecords {
  QTemporaryDir home;
  YearOfRecords() {
    SetAppPath(home.path());
    SysConfig().DBFile.clear();
    SetClock([] { return (kToday + 0.5).ToQDateTime(); });
    Sys_DM().DataModuleCreate();
    QSqlDatabase db = StoreConnection();
    db.transaction();
    QSqlQuery q(db);
    q.prepare(u"INSERT INTO PBXConRecords (Caller, Called, startTime, stopTime, assType, IOFlag, "
              u"RecType) VALUES (?, ?, ?, ?, 0, ?, ?)"_s);
    for (int i = 0; i < kRecords; ++i) {
      const TDateTime start = kYearStart + 365.0 * i / kRecords;
      q.addBindValue(QString::number(8000 + i * 7 % 3000));
      q.addBindValue(QString::number(13800000000LL + qint64(i) * 7919 % 100000000));
      q.addBindValue(FormatFull(start));
      q.addBindValue(FormatFull(start + 90.0 / 86400));
      q.addBindValue(i % 3);
      q.addBindValue(i % 10);
      q.exec();
    }
    db.commit();
  }
};

YearOfRecords &Year() {
  static std::unique_ptr<YearOfRecords> year = std::make_unique<YearOfRecords>();
  return *year;
}

RawStore &Raw() {
  static RawStore raw(Sys_DM().FileName());
  return raw;
}

// The view's page statement for a condition, as the page bar builds it.
QString PageSQL(const QString &condition, int page) {
  return TranslateJet(TSys_DM::BuildPageSQL(50, page, u"PBXConRecords"_s, condition,
                                            TPBXRecords().Frame_DataPage.PageOrder));
}

// The floor: the count and one page of a condition, straight on SQLite.
int RawSearch(const QString &condition, int page) {
  return Raw().Rows(TranslateJet(
             u"select count(*) as recordCount from PBXConRecords where %1 "_s.arg(condition))) +
         Raw().Rows(PageSQL(condition, page));
}

void SetDates(TPBXRecords &r, TDateTime from, TDateTime to) {
  r.DateTimePicker_start_Date = from.DatePart();
  r.DateTimePicker_start_Time = TDateTime();
  r.DateTimePicker_End_Date = to.DatePart();
  r.DateTimePicker_End_Time = TDateTime::FromTime(QTime(23, 59, 59));
}
} // namespace

// The page as the console opens it: today's calls, every number.
static void BM_StartupSearch(benchmark::State &state) {
  Year();
  TPBXRecords records;
  for (auto _ : state)
    records.SpeedButton_FindClick();
  state.counters["rows"] = records.Frame_DataPage.RecordCount;
}
BENCHMARK(BM_StartupSearch)->Unit(benchmark::kMillisecond);

static void BM_StartupSearchFloor(benchmark::State &state) {
  Year();
  TPBXRecords records;
  const QString condition = records.PBX_BuildCondition();
  for (auto _ : state)
    benchmark::DoNotOptimize(RawSearch(condition, 1));
}
BENCHMARK(BM_StartupSearchFloor)->Unit(benchmark::kMillisecond);

// The tenth page of a range of days (the argument) ending in the middle of the
// year: one day is the usual question ("last night"), thirty the worst case.
static void BM_PageInADateRange(benchmark::State &state) {
  Year();
  TPBXRecords records;
  SetDates(records, kYearStart + 181 - double(state.range(0)), kYearStart + 180);
  records.SpeedButton_FindClick();
  for (auto _ : state)
    records.Frame_DataPage.SelectPage(9);
  state.counters["rows"] = records.Frame_DataPage.RecordCount;
}
BENCHMARK(BM_PageInADateRange)->Unit(benchmark::kMillisecond)->Arg(1)->Arg(30);

static void BM_PageInADateRangeFloor(benchmark::State &state) {
  Year();
  TPBXRecords records;
  SetDates(records, kYearStart + 181 - double(state.range(0)), kYearStart + 180);
  const QString sql = PageSQL(records.PBX_BuildCondition(), 10);
  for (auto _ : state)
    benchmark::DoNotOptimize(Raw().Rows(sql));
}
BENCHMARK(BM_PageInADateRangeFloor)->Unit(benchmark::kMillisecond)->Arg(1)->Arg(30);

// "1234" anywhere in either number, over the whole year: count and page 1.
static void BM_SearchPartOfNumber(benchmark::State &state) {
  Year();
  TPBXRecords records;
  records.CheckBox_Start = records.CheckBox_End = false;
  records.Edit_PBXCon_TelNos = u"1234"_s;
  for (auto _ : state)
    records.SpeedButton_FindClick();
  state.counters["rows"] = records.Frame_DataPage.RecordCount;
}
BENCHMARK(BM_SearchPartOfNumber)->Unit(benchmark::kMillisecond);

static void BM_SearchPartOfNumberFloor(benchmark::State &state) {
  Year();
  TPBXRecords records;
  records.CheckBox_Start = records.CheckBox_End = false;
  records.Edit_PBXCon_TelNos = u"1234"_s;
  const QString condition = records.PBX_BuildCondition();
  for (auto _ : state)
    benchmark::DoNotOptimize(RawSearch(condition, 1));
}
BENCHMARK(BM_SearchPartOfNumberFloor)->Unit(benchmark::kMillisecond);

// About 100,000 rows: 36.5 days of the year, every page, to a CSV file.
static QString ExportCondition() {
  TPBXRecords records;
  SetDates(records, kYearStart + 200, kYearStart + 236);
  records.Edit_PBXCon_TelNos.clear();
  return records.PBX_BuildCondition();
}

static void BM_Export100k(benchmark::State &state) {
  Year();
  const QString condition = ExportCondition();
  const QString path = Year().home.filePath(u"export.csv"_s);
  int rows = 0;
  for (auto _ : state)
    rows = ExportRecords(path, u"PBXConRecords"_s, condition, TPBXRecords::Columns(),
                         TPBXRecords().Frame_DataPage.PageOrder)
               .Rows;
  state.counters["rows"] = rows;
}
BENCHMARK(BM_Export100k)->Unit(benchmark::kMillisecond);

// The floor: the same rows read in the same order, and dropped.
static void BM_Export100kFloor(benchmark::State &state) {
  Year();
  const QString sql = TranslateJet(u"SELECT * FROM PBXConRecords WHERE (%1) ORDER BY %2"_s.arg(
      ExportCondition(), TPBXRecords().Frame_DataPage.PageOrder));
  for (auto _ : state)
    benchmark::DoNotOptimize(Raw().Rows(sql));
}
BENCHMARK(BM_Export100kFloor)->Unit(benchmark::kMillisecond);
