// The reporter thread's work for each atom of a long batch, with a service that does nothing.
#include <chrono>
#include <deque>
#include <memory>
#include <ratio>
#include <thread>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBatch = 2000;

Slice Operation() {
  return [engine = std::make_shared<BlockedEngine>()] {
    engine->Empty();
    for (int i = 0; i < kBatch; ++i) {
      (*engine)->ReportFirmwareState(1, SensorVela::FirmwareState{2}, i);
    }
    const std::chrono::duration<double, std::nano> time = engine->Drain();
    return time.count() / kBatch;
  };
}

/// Calls the service and checks the status, on another thread than the one that made the atoms.
Slice Baseline() {
  return [service = BlockedEngine::NewService()] {
    IStats* stats = service.get();
    benchmark::DoNotOptimize(stats);
    std::deque<VendorAtom> batch;
    for (int i = 0; i < kBatch; ++i) batch.push_back(BaselineAtom(3));
    std::chrono::duration<double, std::nano> time{};
    std::thread([&] {
      const auto start = std::chrono::steady_clock::now();
      int failed = 0;
      for (const VendorAtom& atom : batch) {
        if (!stats->reportVendorAtom(atom).isOk()) ++failed;
      }
      benchmark::DoNotOptimize(failed);
      time = std::chrono::steady_clock::now() - start;
    }).join();
    return time.count() / kBatch;
  };
}

}  // namespace

void AddDrain() {
  Add({.table = "The reporter thread, per atom of a long batch",
       .name = "reported",
       .operation = Operation,
       .baseline = Baseline,
       .goal = 1.25,
       .threads = 2});
}

}  // namespace sensorvela::benchmarks
