// sensorvela-reporter-cost TRACE: prints what the reporter thread costs in the run of a trace, and
// what the heap holds after a large burst has been sent.
#include <malloc.h>
#include <time.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include <sensorvela/platform/simulated/log_sink.h>

#include "benchmarks/engine.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace {

namespace tools = sensorvela::tools;

constexpr int kBurst = 100'000;

std::int64_t ThreadNs() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Its steps are the reporter thread's, and on that thread.
class ReporterCost : public tools::RunObserver {
 public:
  void OnReporterStep(Instant /*at*/, tools::ReporterStep step, std::size_t batch) override {
    if (step == tools::ReporterStep::kSends || step == tools::ReporterStep::kDrops) {
      ++batches;
      atoms += batch;
    }
    if (step == tools::ReporterStep::kUploads) ++cycles;
    cpu_ns = ThreadNs();
  }

  std::size_t atoms = 0;
  std::size_t batches = 0;
  std::size_t cycles = 0;
  std::int64_t cpu_ns = 0;
};

void PrintRun(const char* path) {
  ReporterCost cost;
  const tools::Input input = tools::OpenTrace(path);
  const tools::Trace trace(path, input);
  tools::Replay({&cost}, false).Run(trace.Events());
  std::printf("atoms\t%zu\n", cost.atoms);
  // The thread sleeps at most once before each.
  std::printf("batches, and so wake-ups at most\t%zu\n", cost.batches);
  std::printf("cycles that ended\t%zu\n", cost.cycles);
  std::printf("processor time, with the replay's service and supplier, us\t%lld\n",
              static_cast<long long>(cost.cpu_ns / 1000));
}

std::size_t HeapBytes() { return mallinfo2().uordblks; }

void PrintBurst() {
  const sensorvela::simulated::ScopedLogSink to_nowhere(
      [](int, std::string_view, std::string_view) {});
  sensorvela::benchmarks::BlockedEngine engine;
  const std::size_t before = HeapBytes();
  for (int i = 0; i < kBurst; ++i) {
    engine->ReportHalLatency(SensorVela::HalOperation{4}, {0x10, 1}, i);
  }
  std::printf("bytes allocated while a burst of %d events waits\t%zu\n", kBurst,
              HeapBytes() - before);
  engine.Empty();
  const std::size_t after = HeapBytes();
  std::printf("bytes allocated once it has been sent\t%zu\n", after > before ? after - before : 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: sensorvela-reporter-cost TRACE\n");
    return 2;
  }
  std::printf("### The reporter thread\n\t\n");
  PrintRun(argv[1]);
  PrintBurst();
}
