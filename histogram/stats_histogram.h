// A fixed-bin histogram: the form in which a repeated int value carries a distribution.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

namespace android::util::statslogapigen {

/// Counts float samples per bin. Bin 0 lies below the first edge that the caller gives, the last
/// bin begins at the last edge and has no upper end; each bin holds its lower edge. The number of
/// bins is fixed at creation.
///
/// One thread at a time; histograms share no state. Nothing but creation allocates.
///
/// A request that cannot be met is answered with a histogram of one bin, which counts every sample:
/// safe to use, and told by `getBins().size() == 1`. The factories say which requests those are.
class [[gnu::visibility("default")]] StatsHistogram {
 public:
  /// The upper bound of `count`, exclusive: edges and counts stay below 2^30 entries.
  static constexpr int kCountLimit = (1 << 30) - 2;

  /// `count` bins of equal width from `min` to `max`, between an underflow and an overflow bin.
  /// Each edge is the one before it plus the width, in single precision, so that rounding
  /// accumulates; the last edge is `max` itself. Cannot be met when `count` is below 1 or not below
  /// `kCountLimit`.
  static std::unique_ptr<StatsHistogram> createLinearBins(float min, float max, int count);

  /// The same with each edge the one before it times a constant factor. Cannot be met, in addition,
  /// when an edge would not be finite: with inner edges, when `min` is 0 or differs in sign from
  /// `max`.
  static std::unique_ptr<StatsHistogram> createExponentialBins(float min, float max, int count);

  /// An underflow bin, then one bin from each of `edges`, which are taken as they are: unsorted or
  /// equal ones too. Cannot be met when there are more than `kCountLimit` of them.
  static std::unique_ptr<StatsHistogram> createExplicitBins(std::initializer_list<float> edges);

  /// Adds 1 to the count of the bin before the first edge that `value` is less than; to the last
  /// bin's if there is none, as for a NaN. Counts wrap.
  void addValue(float value);

  /// Sets every count to 0.
  void clear();

  const std::vector<std::int32_t>& getBinCounts() const;

  /// The lower edge of each bin; that of bin 0 is the lowest finite float.
  const std::vector<float>& getBins() const;

  StatsHistogram(const StatsHistogram&) = delete;
  StatsHistogram& operator=(const StatsHistogram&) = delete;

 private:
  [[gnu::visibility("hidden")]] explicit StatsHistogram(std::vector<float> bins);

  std::vector<float> bins_;
  std::vector<std::int32_t> bin_counts_;
};

}  // namespace android::util::statslogapigen
