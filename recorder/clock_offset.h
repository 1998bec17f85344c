// Finds out how long the device was suspended.
#pragma once

#include <cstdint>
#include <optional>

namespace sensorvela::recorder {

/// Compares elapsed realtime with the monotonic clock, which stands still while the device is
/// suspended. Not safe for use by two threads at once.
class ClockOffset {
 public:
  /// How long the device was suspended since the last call, in nanoseconds, to within the time that
  /// three readings of a clock take. 0 at the first call.
  std::int64_t TakeSuspension();

 private:
  /// The offset lies between two bounds, because the clocks cannot be read together.
  struct Bounds {
    std::int64_t low_ns;
    std::int64_t high_ns;
  };
  std::optional<Bounds> known_;
};

}  // namespace sensorvela::recorder
