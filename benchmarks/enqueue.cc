// Events that each build and queue one atom, while the reporter thread is blocked.
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBursts = 15;
/// Few enough for the heap to keep their memory.
constexpr int kBurst = 60;
constexpr SensorVela::SensorId kSensor = {0x10, 1};

/// Calls `call` with a `Queue`, in bursts. Before each, the queue is emptied, which is not timed.
template <typename Queue, typename Call>
MakeSlice Repeat(Call call) {
  return [=]() -> Slice {
    return [=, queue = std::make_shared<Queue>()] {
      double ns = 0;
      for (int i = 0; i < kBursts; ++i) {
        queue->Empty();
        // Another thread ran meanwhile, so the first calls find the caches cold.
        for (int warm_up = 0; warm_up < kBurst / 4; ++warm_up) call(*queue);
        ns += MeanNs(kBurst, [&] { call(*queue); });
      }
      return ns / kBursts;
    };
  };
}

/// A status table with its lock, which a disable cannot do without, and a queue.
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

template <typename Queue, typename Operation, typename Baseline>
void AddRow(const char* name, const Operation& operation, const Baseline& baseline) {
  Add({.table = "Queueing an atom, reporter thread blocked",
       .name = name,
       .operation = Repeat<BlockedEngine>(operation),
       .baseline = Repeat<Queue>(baseline),
       .goal = 1.15});
}

}  // namespace

void AddEnqueue() {
  const VendorAtom atom = BaselineAtom(20);
  AddRow<BaselineQueue>(
      "4 values (ReportHalLatency)",
      [](BlockedEngine& engine) {
        engine->ReportHalLatency(SensorVela::HalOperation{4}, kSensor, 1'500'000);
      },
      [](BaselineQueue& queue) { queue.Enqueue(BaselineAtom(4)); });
  AddRow<BaselineTable>(
      "7 values, one a list (ReportHalSensorDisabled)",
      [](BlockedEngine& engine) { engine->ReportHalSensorDisabled(kSensor); },
      [](BaselineTable& table) { table.Report(); });
  AddRow<BaselineQueue>(
      "20 values, copied (ReportVendorAtomAsync)",
      [atom](BlockedEngine& engine) { engine->ReportVendorAtomAsync(atom); },
      [atom](BaselineQueue& queue) { queue.Enqueue(VendorAtom(atom)); });
}

}  // namespace sensorvela::benchmarks
