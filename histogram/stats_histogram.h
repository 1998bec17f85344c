// A histogram with fixed bins. A repeated int value of an atom carries its counts.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

namespace android::util::statslogapigen {

/// Counts float samples per bin. Bin 0 is for samples below the caller's first edge; the last bin
/// begins at the last edge and has no upper end. Each bin includes its lower edge. The number of
/// bins is fixed at creation.
///
/// Only one thread at a time may use a histogram; histograms share no state. Only creation
/// allocates.
///
/// A factory that refuses the requested bins returns a histogram of one bin, which counts every
/// sample. It is safe to use; `getBins().size() == 1` detects it, since only
/// `createExplicitBins({})` asks for one bin. A request that is not refused takes 8 bytes a bin: on
/// a 32-bit device a `count` of some hundred millions ends in a failed allocation.
class [[gnu::visibility("default")]] StatsHistogram {
 public:
  /// The exclusive upper bound of `count`, which keeps edges and counts below 2^30 entries.
  static constexpr int kCountLimit = (1 << 30) - 2;

  /// `count` bins of equal width from `min` to `max`, between an underflow and an overflow bin.
  /// Each edge is the one before it plus the width, in single precision, so that rounding
  /// accumulates; the last edge is `max` itself. Returns the one-bin histogram when, and only when,
  /// `count` is below 1 or not below `kCountLimit`.
  static std::unique_ptr<StatsHistogram> createLinearBins(float min, float max, int count);

  /// Like `createLinearBins`, but each edge is the one before it times a constant factor. Also
  /// returns the one-bin histogram when there is no factor: `count` is at least 2, and either `min`
  /// is 0, or one of `min` and `max` is above 0 and the other below.
  ///
  /// Every other request is met. Its inner edges are infinite when the factor or an edge overflows,
  /// 0 when `max` is 0 or the factor underflows, and can be NaN when `min` or `max` is infinite or
  /// NaN.
  static std::unique_ptr<StatsHistogram> createExponentialBins(float min, float max, int count);

  /// An underflow bin, then one bin that begins at each of `edges`. The edges are used as given,
  /// even if unsorted or equal. Returns the one-bin histogram when there are more than
  /// `kCountLimit` edges.
  static std::unique_ptr<StatsHistogram> createExplicitBins(std::initializer_list<float> edges);

  /// Finds the first edge that is greater than `value` and adds 1 to the count of the bin before
  /// it, or to the last bin's if there is no such edge, as for a NaN. Counts wrap.
  void addValue(float value);

  /// Sets every count to 0.
  void clear();

  const std::vector<std::int32_t>& getBinCounts() const;

  /// The lower edge of each bin; bin 0's is the lowest finite float.
  const std::vector<float>& getBins() const;

  StatsHistogram(const StatsHistogram&) = delete;
  StatsHistogram& operator=(const StatsHistogram&) = delete;

 private:
  [[gnu::visibility("hidden")]] explicit StatsHistogram(std::vector<float> bins);

  std::vector<float> bins_;
  std::vector<std::int32_t> bin_counts_;
};

}  // namespace android::util::statslogapigen
