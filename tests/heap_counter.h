// Counts what the whole program, the libraries included, takes from `operator new`.
#pragma once

#include <cstdint>

namespace sensorvela::testing {

/// False in a build with the Thread sanitizer, whose own `operator new` cannot be replaced.
#if defined(__has_feature)
inline constexpr bool kHeapIsCounted = !__has_feature(thread_sanitizer);
#else
inline constexpr bool kHeapIsCounted = true;
#endif

/// Since the program's start, over all threads.
std::int64_t HeapBytesInUse();

/// By the calling thread, since its start.
std::int64_t AllocationsOfThisThread();

}  // namespace sensorvela::testing
