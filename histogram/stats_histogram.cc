#include "histogram/stats_histogram.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace android::util::statslogapigen {
namespace {

constexpr float kLowest = std::numeric_limits<float>::lowest();

bool IsValidCount(int count) { return count >= 1 && count < StatsHistogram::kCountLimit; }

/// The underflow edge, `min`, the inner edges, each of which `next` computes from the edge before
/// it, and `max`.
template <typename Next>
std::vector<float> MakeBins(float min, float max, int count, Next next) {
  std::vector<float> bins(static_cast<std::size_t>(count) + 2);
  bins[0] = kLowest;
  bins[1] = min;
  for (std::size_t i = 2; i + 1 < bins.size(); ++i) bins[i] = next(bins[i - 1]);
  bins.back() = max;
  return bins;
}

}  // namespace

StatsHistogram::StatsHistogram(std::vector<float> bins)
    : bins_(std::move(bins)), bin_counts_(bins_.size()) {}

std::unique_ptr<StatsHistogram> StatsHistogram::createLinearBins(float min, float max, int count) {
  if (!IsValidCount(count)) return createExplicitBins({});
  const float step = (max - min) / static_cast<float>(count);
  return std::unique_ptr<StatsHistogram>(
      new StatsHistogram(MakeBins(min, max, count, [=](float edge) { return edge + step; })));
}

std::unique_ptr<StatsHistogram> StatsHistogram::createExponentialBins(float min, float max,
                                                                      int count) {
  if (!IsValidCount(count)) return createExplicitBins({});
  // Only inner edges need the ratio.
  const bool has_no_ratio = min == 0 || (min < 0 && max > 0) || (min > 0 && max < 0);
  if (count > 1 && has_no_ratio) return createExplicitBins({});
  const float ratio = count > 1 ? max / min : 1;
  const auto factor = static_cast<float>(std::pow(double{ratio}, 1.0 / count));
  return std::unique_ptr<StatsHistogram>(
      new StatsHistogram(MakeBins(min, max, count, [=](float edge) { return edge * factor; })));
}

std::unique_ptr<StatsHistogram> StatsHistogram::createExplicitBins(
    std::initializer_list<float> edges) {
  const bool can_be_met = edges.size() <= static_cast<std::size_t>(kCountLimit);
  std::vector<float> bins(can_be_met ? edges.size() + 1 : 1);
  bins[0] = kLowest;
  if (can_be_met) std::copy(edges.begin(), edges.end(), bins.begin() + 1);
  return std::unique_ptr<StatsHistogram>(new StatsHistogram(std::move(bins)));
}

void StatsHistogram::addValue(float value) {
  std::size_t bin = 1;
  while (bin < bins_.size() && !(value < bins_[bin])) ++bin;
  std::int32_t& count = bin_counts_[bin - 1];
  count = static_cast<std::int32_t>(static_cast<std::uint32_t>(count) + 1);
}

void StatsHistogram::clear() { std::fill(bin_counts_.begin(), bin_counts_.end(), 0); }

const std::vector<std::int32_t>& StatsHistogram::getBinCounts() const { return bin_counts_; }

const std::vector<float>& StatsHistogram::getBins() const { return bins_; }

}  // namespace android::util::statslogapigen
