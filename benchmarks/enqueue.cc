// Events that become an atom each, while the reporter thread is busy: build it, queue it.
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
       .name = "20 values, copied (ReportVendorAtomAsync)",
       .ours = Repeat<BusyEngine>(
           [atom = FloorAtom(20)](BusyEngine& engine) { engine->ReportVendorAtomAsync(atom); }),
       .floor = Repeat<FloorQueue>(
           [atom = FloorAtom(20)](FloorQueue& queue) { queue.Enqueue(VendorAtom(atom)); }),
       .goal = 1.10});
}

}  // namespace sensorvela::benchmarks
