// The reporter thread's work for each atom of a long batch, with a service that does nothing.
#include <chrono>
#include <deque>
#include <thread>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBatch = 4096;

void SetTime(benchmark::State& state, std::chrono::nanoseconds time) {
  state.SetIterationTime(std::chrono::duration<double>(time).count());
}

enum class Extent { kReports, kReportsAndFrees };

Body Operation(Extent extent) {
  return [=](benchmark::State& state) {
    BlockedEngine engine;
    while (state.KeepRunningBatch(kBatch)) {
      engine.Empty();
      for (int i = 0; i < kBatch; ++i) {
        engine->ReportFirmwareState(1, SensorVela::FirmwareState{2}, i);
      }
      // The batch is reported during the first `Drain` and freed during the second.
      std::chrono::nanoseconds time = engine.Drain();
      if (extent == Extent::kReportsAndFrees) time += engine.Drain();
      SetTime(state, time);
    }
  };
}

/// Calls the service and checks the status, on another thread than the one that made the atoms.
Body Baseline(Extent extent) {
  return [=](benchmark::State& state) {
    BlockingService service;
    IStats* stats = &service;
    benchmark::DoNotOptimize(stats);
    int failed = 0;
    while (state.KeepRunningBatch(kBatch)) {
      std::deque<VendorAtom> batch;
      for (int i = 0; i < kBatch; ++i) batch.push_back(BaselineAtom(3));
      std::thread([&] {
        const auto start = std::chrono::steady_clock::now();
        for (const VendorAtom& atom : batch) {
          if (!stats->reportVendorAtom(atom).isOk()) ++failed;
        }
        if (extent == Extent::kReportsAndFrees) std::deque<VendorAtom>().swap(batch);
        SetTime(state, std::chrono::steady_clock::now() - start);
      }).join();
    }
    benchmark::DoNotOptimize(failed);
  };
}

}  // namespace

void AddDrain() {
  Add({.table = "The reporter thread, per atom of a long batch",
       .name = "reported",
       .operation = Operation(Extent::kReports),
       .baseline = Baseline(Extent::kReports),
       .goal = 1.25,
       .manual_time = true});
  Add({.table = "The reporter thread, per atom of a long batch",
       .name = "reported and freed",
       .operation = Operation(Extent::kReportsAndFrees),
       .baseline = Baseline(Extent::kReportsAndFrees),
       .manual_time = true});
}

}  // namespace sensorvela::benchmarks
