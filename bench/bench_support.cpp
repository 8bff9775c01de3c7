// Start-up and shift-long costs of the support layer: loading a language pack
// (at start and at every switch), saving the settings (at every connect and
// close), and one log line (the link writes one per packet with Debug on).
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
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
