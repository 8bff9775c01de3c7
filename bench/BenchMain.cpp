// The main of every benchmark program that needs no more than an event loop:
// the Qt application object, then Google Benchmark's own run.
#include <benchmark/benchmark.h>

#include <QCoreApplication>

int main(int argc, char **argv) {
  QCoreApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
