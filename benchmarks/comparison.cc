#include "benchmarks/comparison.h"

#include <string>

namespace sensorvela::benchmarks {
namespace {

constexpr int kRepetitions = 7;
constexpr int kCounterRepetitions = 2;
constexpr double kSeconds = 0.02;

benchmark::internal::Benchmark* Register(const std::string& table, const std::string& row,
                                         const Body& body) {
  return benchmark::RegisterBenchmark((table + ": " + row).c_str(), body);
}

/// One ratio. The order of the slices cancels a drift of the machine's speed.
void Compare(benchmark::State& state, const Comparison& comparison) {
  const Slice operation = comparison.operation();
  const Slice baseline = comparison.baseline();
  double operation_ns = 0;
  double baseline_ns = 0;
  for (auto _ : state) {
    operation();  // Fills the caches.
    baseline();
    operation_ns = operation();
    baseline_ns = baseline();
    baseline_ns += baseline();
    operation_ns += operation();
  }
  state.counters["ns"] = operation_ns / 2;
  state.counters["baseline_ns"] = baseline_ns / 2;
  state.counters["ratio"] = operation_ns / baseline_ns;
  state.counters["goal"] = comparison.goal;
  state.counters["threads_of_a_slice"] = comparison.threads;
}

}  // namespace

void Add(const Comparison& comparison) {
  Register(comparison.table, comparison.name,
           [=](benchmark::State& state) { Compare(state, comparison); })
      ->Iterations(1)
      ->Repetitions(comparison.repetitions);
}

void Add(const std::string& table, const std::string& name, const Body& body) {
  Register(table, name, body)->UseRealTime()->MinTime(kSeconds)->Repetitions(kRepetitions);
}

void AddCounters(const std::string& table, const std::string& name, const Body& body) {
  Register(table, name, body)->Iterations(1)->Repetitions(kCounterRepetitions);
}

}  // namespace sensorvela::benchmarks
