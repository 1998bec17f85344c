// The simulated platform's stand-in for the device's system clock header.
#pragma once

#include <cstdint>

namespace android {

// Both clocks begin at boot. They are virtual while there is virtual time
// (platform/simulated/virtual_time.h).

/// Elapsed realtime, in milliseconds and in nanoseconds: goes on while the device is suspended.
std::int64_t elapsedRealtime();
std::int64_t elapsedRealtimeNano();

/// The monotonic clock, likewise: stands still while the device is suspended.
std::int64_t uptimeMillis();
std::int64_t uptimeNanos();

}  // namespace android
