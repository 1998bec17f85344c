// sensorvela-bench: measures the library's operations and compares them with their baselines.
#include <malloc.h>

#include <cstdio>

#include <sensorvela/platform/simulated/log_sink.h>

#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

int main(int argc, char** argv) {
  namespace benchmarks = sensorvela::benchmarks;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  // The heap keeps freed memory, so that no operation pays for getting pages from the kernel.
  mallopt(M_TRIM_THRESHOLD, 1 << 30);  // NOLINT(concurrency-mt-unsafe): the only thread.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);  // NOLINT(concurrency-mt-unsafe)
  const sensorvela::simulated::ScopedLogSink to_nowhere(
      [](int, std::string_view, std::string_view) {});
  benchmarks::AddSamplePath();
  benchmarks::AddEnqueue();
  benchmarks::AddErrorCap();
  benchmarks::AddDrain();
  benchmarks::AddHistogram();
  benchmarks::AddBuilders();
  benchmarks::AddScale();
  benchmarks::AddBacklog();
  benchmarks::Tables tables;
  if (benchmark::RunSpecifiedBenchmarks(&tables) > 0) return 0;
  std::fprintf(stderr, "sensorvela-bench: no benchmark has that name\n");
  return 1;
}
