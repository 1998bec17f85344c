// sensorvela-bench: measures the library's operations and compares them with their baselines.
// `scripts/bench` runs it and prints its tables.
#include <cstdio>
#include <string_view>

#include <sensorvela/platform/simulated/log_sink.h>

#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

int main(int argc, char** argv) {
  namespace benchmarks = sensorvela::benchmarks;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const sensorvela::simulated::ScopedLogSink to_nowhere(
      [](int, std::string_view, std::string_view) {});
  benchmarks::AddSamplePath();
  benchmarks::AddEnqueue();
  benchmarks::AddBurst();
  benchmarks::AddErrorCap();
  benchmarks::AddDrain();
  benchmarks::AddHistogram();
  benchmarks::AddBuilders();
  benchmarks::AddAlternatives();
  benchmarks::AddBacklog();
  if (benchmark::RunSpecifiedBenchmarks() > 0) return 0;
  std::fprintf(stderr, "sensorvela-bench: no benchmark has that name\n");
  return 1;
}
