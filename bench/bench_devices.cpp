// The board's layout: all 3072 panels placed again after a resize or a move.
#include "devices/CallControlDev.h"

#include <benchmark/benchmark.h>

static void BM_Relayout3072(benchmark::State &state) {
  TCallControlDev table;
  table.ParentWidth = 1280;
  for (int id = 0; id < kDeviceCount; ++id)
    table.AddPanel(id);
  int width = 1280;
  for (auto _ : state) {
    // Alternate widths, as a board being resized would.
    width = width == 1280 ? 1366 : 1280;
    table.ParentWidth = width;
    table.Relayout();
    benchmark::DoNotOptimize(table.Record(3071).Top);
  }
}
BENCHMARK(BM_Relayout3072)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
