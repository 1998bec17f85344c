// Counts the allocations and locks of the whole program, including the libraries.
#pragma once

#include <cstdint>

namespace sensorvela::testing {

/// False in a build with the Thread sanitizer, whose own `operator new` and locks cannot be
/// replaced.
#ifdef __has_feature
inline constexpr bool kCallsAreCounted = !__has_feature(thread_sanitizer);
#else
inline constexpr bool kCallsAreCounted = true;
#endif

struct CallCounts {
  int allocations = 0;
  int locks = 0;

  bool operator==(const CallCounts&) const = default;
};

/// The calls of the calling thread since its start.
CallCounts CallsOfThisThread();

/// The bytes that all threads have allocated and not freed since the program's start.
std::int64_t HeapBytesInUse();

}  // namespace sensorvela::testing
