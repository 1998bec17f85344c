// Counts what the whole program, the libraries included, takes from `operator new`.
#pragma once

#include <cstdint>

namespace sensorvela::testing {

/// Since the program's start, over all threads.
std::int64_t HeapBytesInUse();

/// By the calling thread, since its start.
std::int64_t AllocationsOfThisThread();

}  // namespace sensorvela::testing
