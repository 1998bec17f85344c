// sensorvela-bench: what the library costs, beside what the same work must cost.
#include <malloc.h>

#include <cstdio>

#include <sensorvela/platform/simulated/log_sink.h>

#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

int main(int argc, char** argv) {
  namespace benchmarks = sensorvela::benchmarks;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  // The heap keeps what is freed, so that no operation is charged for the kernel's pages.
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
