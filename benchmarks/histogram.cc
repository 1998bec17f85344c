// Counting a value in a histogram of 22 bins.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <sensorvela/histogram/stats_histogram.h>

#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kCalls = 10'000;

/// Calls `add` with one value from each bin in turn; the bins are 5 wide.
template <typename Add>
double TimeOf(const Add& add) {
  float value = -2.5F;
  return MeanNs(kCalls, [&] {
    add(value);
    value = value > 100 ? -2.5F : value + 5;
  });
}

auto NewHistogram() {
  return android::util::statslogapigen::StatsHistogram::createLinearBins(0, 100, 20);
}

Slice Operation() {
  return [histogram = std::shared_ptr(NewHistogram())] {
    return TimeOf([&](float value) { histogram->addValue(value); });
  };
}

/// A linear scan for the bin.
[[gnu::noinline]] void BaselineAdd(const std::vector<float>& edges,
                                   std::vector<std::int32_t>& counts, float value) {
  std::size_t bin = 1;
  while (bin < edges.size() && !(value < edges[bin])) ++bin;
  ++counts[bin - 1];
}

Slice Baseline() {
  const std::vector<float> edges = NewHistogram()->getBins();
  return [=, counts = std::vector<std::int32_t>(edges.size())]() mutable {
    return TimeOf([&](float value) { BaselineAdd(edges, counts, value); });
  };
}

}  // namespace

void AddHistogram() {
  Add({.table = "StatsHistogram::addValue",
       .name = "22 bins, one value from each in turn",
       .operation = Operation,
       .baseline = Baseline,
       .goal = 1.05});
}

}  // namespace sensorvela::benchmarks
