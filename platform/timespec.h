// Conversion of times for the C library, shared by the implementations of platform/sync.h.
#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace sensorvela::platform {

/// The same time, or the nearest that a `timespec` holds: on 32-bit Arm, its seconds have 32 bits.
inline timespec ToTimespec(std::chrono::nanoseconds time) {
  constexpr std::chrono::seconds kLeast(std::numeric_limits<time_t>::min());
  constexpr std::chrono::seconds kGreatest(std::numeric_limits<time_t>::max());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  return {.tv_sec = static_cast<time_t>(std::clamp(seconds, kLeast, kGreatest).count()),
          .tv_nsec = static_cast<long>((time - seconds).count())};
}

}  // namespace sensorvela::platform
