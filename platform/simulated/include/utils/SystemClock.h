// The simulated platform's stand-in for the device's system clock header: what the library uses of
// it.
#pragma once

#include <cstdint>

namespace android {

/// Nanoseconds since boot, time asleep included; the virtual timeline's instant while one is in
/// place (platform/simulated/virtual_time.h).
std::int64_t elapsedRealtimeNano();

}  // namespace android
