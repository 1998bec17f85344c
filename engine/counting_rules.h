// What the engine counts by: the cap of errors, the bands of latencies, and when a sample is late.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "engine/wrapping_arithmetic.h"

namespace sensorvela {

/// How many errors of one kind are reported in a cycle.
inline constexpr std::uint32_t kErrorCapPerCycle = 10;

/// The largest latency of each band but the last, which has no limit.
inline constexpr std::array<std::int64_t, 4> kLatencyBandLimitsNs = {2'500'000, 5'000'000,
                                                                     10'000'000, 20'000'000};
inline constexpr std::size_t kLatencyBands = kLatencyBandLimitsNs.size() + 1;

/// A sample is late when more than this many sampling periods lie between it and the one before.
inline constexpr float kGapToleranceFactor = 1.1F;

inline std::size_t LatencyBand(std::int64_t latency_ns) {
  std::size_t band = kLatencyBandLimitsNs.size();
  while (band > 0 && latency_ns <= kLatencyBandLimitsNs[band - 1]) --band;
  return band;
}

/// Computes in single precision throughout. A product outside the integer's range saturates, as the
/// device's own conversion does.
inline std::int64_t GapThresholdNs(std::int64_t sampling_period_ns) {
  const float threshold_ns = static_cast<float>(sampling_period_ns) * kGapToleranceFactor;
  constexpr float kTwoTo63 = 9223372036854775808.0F;
  if (threshold_ns >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (threshold_ns < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(threshold_ns);
}

/// Whether a sample comes too long after the one before, or after the enable. The times wrap.
inline bool IsLate(std::int64_t timestamp_ns, std::int64_t last_ns, std::int64_t gap_threshold_ns) {
  return WrappingSubtract(timestamp_ns, last_ns) > gap_threshold_ns;
}

}  // namespace sensorvela
