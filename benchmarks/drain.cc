// What the reporter thread does for each atom of a long batch, with a service that does nothing.
#include <chrono>
#include <deque>
#include <thread>

#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/floor_queue.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kBatch = 4096;

void SetTime(benchmark::State& state, std::chrono::nanoseconds time) {
  state.SetIterationTime(std::chrono::duration<double>(time).count());
}

void Ours(benchmark::State& state) {
  BusyEngine engine;
  while (state.KeepRunningBatch(kBatch)) {
    engine.Empty();
    for (int i = 0; i < kBatch; ++i) {
      engine->ReportFirmwareState(1, SensorVela::FirmwareState{2}, i);
    }
    SetTime(state, engine.Drain());
  }
}

/// The virtual call and the status check, on another thread than the one that made the atoms.
void Floor(benchmark::State& state) {
  PluggedService service;
  IStats* stats = &service;
  benchmark::DoNotOptimize(stats);
  int failed = 0;
  while (state.KeepRunningBatch(kBatch)) {
    std::deque<VendorAtom> batch;
    for (int i = 0; i < kBatch; ++i) batch.push_back(FloorAtom(3));
    std::thread([&] {
      const auto start = std::chrono::steady_clock::now();
      for (const VendorAtom& atom : batch) {
        if (!stats->reportVendorAtom(atom).isOk()) ++failed;
      }
      SetTime(state, std::chrono::steady_clock::now() - start);
    }).join();
  }
  benchmark::DoNotOptimize(failed);
}

}  // namespace

void AddDrain() {
  Add({.table = "The reporter thread",
       .name = "one atom of a long batch",
       .ours = Ours,
       .floor = Floor,
       .goal = 1.25,
       .settings = [](benchmark::internal::Benchmark& it) { it.UseManualTime(); }});
}

}  // namespace sensorvela::benchmarks
