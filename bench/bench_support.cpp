// Start-up and shift-long costs of the support layer: loading a language pack
// (at start and at every switch), saving the settings (at every connect and
// close), and one log line (the link writes one per packet with Debug on).
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
const QString kPacks = QStringLiteral(TRUNKDESK_SOURCE_DIR) + u"/resources/ini/"_s;
}

static void BM_LoadLanguagePack(benchmark::State &state) {
  TLanguage_Pack pack;
  for (auto _ : state)
    benchmark::DoNotOptimize(pack.LoadLanguageFile(kPacks + u"lang_chinese.lan"_s));
}
BENCHMARK(BM_LoadLanguagePack)->Unit(benchmark::kMillisecond);

static void BM_SaveConfig(benchmark::State &state) {
  QTemporaryDir home;
  SetAppPath(home.path());
  TSysConfig config;
  LoadConfig(config);
  for (auto _ : state)
    SaveConfig(config);
}
BENCHMARK(BM_SaveConfig)->Unit(benchmark::kMillisecond);

static void BM_WriteLogLine(benchmark::State &state) {
  QTemporaryDir home;
  SetAppPath(home.path());
  SysConfig().Debug = 1;
  for (auto _ : state)
    WriteLog(u"Winsock_TCPDataArrival: 76 bytes"_s);
  SysConfig().Debug = 0;
}
BENCHMARK(BM_WriteLogLine)->Unit(benchmark::kMicrosecond);

// The floors, in the same run: what each of the three can't do without.

// The pack's file read and decoded into lines.
static void BM_LoadLanguagePackFloor(benchmark::State &state) {
  for (auto _ : state) {
    QFile file(kPacks + u"lang_chinese.lan"_s);
    file.open(QIODevice::ReadOnly);
    benchmark::DoNotOptimize(QString::fromUtf8(file.readAll()).split(u'\n'));
  }
}
BENCHMARK(BM_LoadLanguagePackFloor)->Unit(benchmark::kMillisecond);

// The saved file's bytes read, and written beside it and renamed into place.
static void BM_SaveConfigFloor(benchmark::State &state) {
  QTemporaryDir home;
  SetAppPath(home.path());
  TSysConfig config;
  LoadConfig(config);
  SaveConfig(config);
  const QString path = home.filePath(u"ini/sys.ini"_s);
  for (auto _ : state) {
    QFile in(path);
    in.open(QIODevice::ReadOnly);
    const QByteArray bytes = in.readAll();
    in.close();
    QSaveFile out(path);
    out.open(QIODevice::WriteOnly);
    out.write(bytes);
    out.commit();
  }
}
BENCHMARK(BM_SaveConfigFloor)->Unit(benchmark::kMillisecond);

// The same line appended to a file opened and closed around it.
static void BM_WriteLogLineFloor(benchmark::State &state) {
  QTemporaryDir home;
  const QByteArray line = "12:00:00 Winsock_TCPDataArrival: 76 bytes\n";
  for (auto _ : state) {
    QFile file(home.filePath(u"floor.ini"_s));
    file.open(QIODevice::WriteOnly | QIODevice::Append);
    file.write(line);
    file.close();
  }
}
BENCHMARK(BM_WriteLogLineFloor)->Unit(benchmark::kMicrosecond);
