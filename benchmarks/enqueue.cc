// Events that each build and queue one atom, while the reporter thread is blocked.
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBatch = 1024;
constexpr SensorVela::SensorId kSensor = {0x10, 1};

/// Calls `call` with a `Queue`, in batches. Before each batch the queue is emptied, which is not
/// timed.
template <typename Queue, typename Call>
Body Repeat(Call call) {
  return [=](benchmark::State& state) {
    Queue queue;
    while (state.KeepRunningBatch(kBatch)) {
      state.PauseTiming();
      queue.Empty();
      state.ResumeTiming();
      for (int i = 0; i < kBatch; ++i) call(queue);
    }
  };
}

/// A status table with its lock, and a queue.
class BaselineTable {
 public:
  void Report() {
    const std::lock_guard lock(mutex_);
    benchmark::DoNotOptimize(counts_.find(1)->second);
    queue_.Enqueue(BaselineAtom(6, true));
  }
  void Empty() { queue_.Empty(); }

 private:
  std::mutex mutex_;
  std::unordered_map<std::uint64_t, std::uint32_t> counts_ = {{1, 0}};
  BaselineQueue queue_;
};

}  // namespace

void AddEnqueue() {
  constexpr char kTable[] = "Queueing an atom, reporter thread blocked";
  Add({.table = kTable,
       .name = "4 values (ReportHalLatency)",
       .operation = Repeat<BlockedEngine>([](BlockedEngine& engine) {
         engine->ReportHalLatency(SensorVela::HalOperation{4}, kSensor, 1'500'000);
       }),
       .baseline =
           Repeat<BaselineQueue>([](BaselineQueue& queue) { queue.Enqueue(BaselineAtom(4)); }),
       .goal = 1.15});
  Add({.table = kTable,
       .name = "7 values, one a list (ReportHalSensorDisabled)",
       .operation = Repeat<BlockedEngine>(
           [](BlockedEngine& engine) { engine->ReportHalSensorDisabled(kSensor); }),
       .baseline = Repeat<BaselineQueue>(
           [](BaselineQueue& queue) { queue.Enqueue(BaselineAtom(6, true)); }),
       .goal = 1.15});
  Add({.table = kTable,
       .name = "the same, baseline also locks and looks up the status",
       .operation = Repeat<BlockedEngine>(
           [](BlockedEngine& engine) { engine->ReportHalSensorDisabled(kSensor); }),
       .baseline = Repeat<BaselineTable>([](BaselineTable& table) { table.Report(); })});
  Add({.table = kTable,
       .name = "20 values, copied (ReportVendorAtomAsync)",
       .operation = Repeat<BlockedEngine>([atom = BaselineAtom(20)](BlockedEngine& engine) {
         engine->ReportVendorAtomAsync(atom);
       }),
       .baseline = Repeat<BaselineQueue>(
           [atom = BaselineAtom(20)](BaselineQueue& queue) { queue.Enqueue(VendorAtom(atom)); }),
       .goal = 1.10});
}

}  // namespace sensorvela::benchmarks
