// The time of each enqueue while the queue behind a blocked service grows to a million atoms.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr std::size_t kAtoms = 1'000'000;

/// Fills the queue with `begin` atoms, then times each enqueue until there are `end`.
template <typename Call>
void Measure(benchmark::State& state, std::size_t begin, std::size_t end, const Call& enqueue) {
  using Clock = std::chrono::steady_clock;
  std::vector<std::int64_t> times_ns(end - begin);
  for (auto _ : state) {
    for (std::size_t i = 0; i < begin; ++i) enqueue();
    for (std::int64_t& time_ns : times_ns) {
      const auto start = Clock::now();
      enqueue();
      time_ns = std::chrono::nanoseconds(Clock::now() - start).count();
    }
  }
  std::sort(times_ns.begin(), times_ns.end());
  const auto at = [&](std::size_t per_mille) {
    return static_cast<double>(times_ns[(times_ns.size() - 1) * per_mille / 1000]);
  };
  state.counters["1: median ns"] = at(500);
  state.counters["2: 99.9 % ns"] = at(999);
  state.counters["3: worst ns"] = static_cast<double>(times_ns.back());
}

}  // namespace

void AddBacklog() {
  std::size_t begin = 0;
  for (std::size_t end = 1'000; end <= kAtoms; end *= 10) {
    const std::string name = std::to_string(begin) + " to " + std::to_string(end);
    AddCounters("An enqueue, by the number of atoms already queued", name,
                [=](benchmark::State& state) {
                  BlockedEngine engine;
                  Measure(state, begin, end, [&] {
                    engine->ReportHalLatency(SensorVela::HalOperation{4}, {0x10, 1}, 1'500'000);
                  });
                });
    begin = end;
  }
}

}  // namespace sensorvela::benchmarks
