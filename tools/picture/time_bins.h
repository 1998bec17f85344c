// The equal parts of a run by which the picture counts samples.
#pragma once

#include <chrono>
#include <cstddef>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::tools {

struct TimeBins {
  using Instant = simulated::VirtualTime::Instant;

  /// A whole multiple of `width`.
  Instant begin = {};
  std::chrono::nanoseconds width = std::chrono::seconds(1);
  std::size_t count = 1;

  /// The bin of an instant; the nearest bin if the instant is in none.
  std::size_t IndexOf(Instant at) const;
};

/// Bins for a run from `begin` to `end`: as narrow as 1500 of them allow, of a second, a minute, an
/// hour, a day or so. For a day of 24 hours they are minutes.
TimeBins BinsFor(TimeBins::Instant begin, TimeBins::Instant end);

}  // namespace sensorvela::tools
