// Events that become an atom each, while the reporter thread is busy: build it, queue it.
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/floor_queue.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBatch = 1024;
constexpr SensorVela::SensorId kSensor = {0x10, 1};

/// Calls `call` with a `Queue`, which is emptied now and then, off the clock.
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

/// A status table under its lock, and the queue.
class FloorTable {
 public:
  void Report() {
    const std::lock_guard lock(mutex_);
    benchmark::DoNotOptimize(counts_.find(1)->second);
    queue_.Enqueue(FloorAtom(6, true));
  }
  void Empty() { queue_.Empty(); }

 private:
  std::mutex mutex_;
  std::unordered_map<std::uint64_t, std::uint32_t> counts_ = {{1, 0}};
  FloorQueue queue_;
};

}  // namespace

void AddEnqueue() {
  constexpr char kTable[] = "An atom queued, the reporter thread busy elsewhere";
  Add({.table = kTable,
       .name = "4 values (ReportHalLatency)",
       .ours = Repeat<BusyEngine>([](BusyEngine& engine) {
         engine->ReportHalLatency(SensorVela::HalOperation{4}, kSensor, 1'500'000);
       }),
       .floor = Repeat<FloorQueue>([](FloorQueue& queue) { queue.Enqueue(FloorAtom(4)); }),
       .goal = 1.15});
  Add({.table = kTable,
       .name = "7 values, one a list (ReportHalSensorDisabled)",
       .ours =
           Repeat<BusyEngine>([](BusyEngine& engine) { engine->ReportHalSensorDisabled(kSensor); }),
       .floor = Repeat<FloorQueue>([](FloorQueue& queue) { queue.Enqueue(FloorAtom(6, true)); }),
       .goal = 1.15});
  Add({.table = kTable,
       .name = "the same, floor with a lock and a lookup for the status",
       .ours =
           Repeat<BusyEngine>([](BusyEngine& engine) { engine->ReportHalSensorDisabled(kSensor); }),
       .floor = Repeat<FloorTable>([](FloorTable& table) { table.Report(); })});
  Add({.table = kTable,
       .name = "20 values, copied (ReportVendorAtomAsync)",
       .ours = Repeat<BusyEngine>(
           [atom = FloorAtom(20)](BusyEngine& engine) { engine->ReportVendorAtomAsync(atom); }),
       .floor = Repeat<FloorQueue>(
           [atom = FloorAtom(20)](FloorQueue& queue) { queue.Enqueue(VendorAtom(atom)); }),
       .goal = 1.10});
}

}  // namespace sensorvela::benchmarks
