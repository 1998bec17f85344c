#include "recorder/clock_offset.h"

#include <utils/SystemClock.h>

#include <algorithm>
#include <cstdint>

#include "engine/wrapping_arithmetic.h"

namespace sensorvela::recorder {

std::int64_t ClockOffset::TakeSuspension() {
  const std::int64_t monotonic_before_ns = android::uptimeNanos();
  const std::int64_t elapsed_ns = android::elapsedRealtimeNano();
  const std::int64_t monotonic_after_ns = android::uptimeNanos();
  const Bounds seen = {WrappingSubtract(elapsed_ns, monotonic_after_ns),
                       WrappingSubtract(elapsed_ns, monotonic_before_ns)};
  if (!known_ || seen.low_ns > known_->high_ns) {
    const std::int64_t suspended_ns = known_ ? WrappingSubtract(seen.low_ns, known_->high_ns) : 0;
    known_ = seen;
    return suspended_ns;
  }
  known_ = {std::max(known_->low_ns, seen.low_ns), std::min(known_->high_ns, seen.high_ns)};
  return 0;
}

}  // namespace sensorvela::recorder
