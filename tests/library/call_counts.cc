#include "tests/library/call_counts.h"

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace sensorvela::testing {
namespace {

std::atomic<std::int64_t> bytes_in_use = 0;
thread_local CallCounts counts;

}  // namespace

std::int64_t HeapBytesInUse() { return bytes_in_use; }
CallCounts CallsOfThisThread() { return counts; }

}  // namespace sensorvela::testing

#ifdef __has_feature
#if __has_feature(thread_sanitizer)
#define SENSORVELA_CALLS_ARE_NOT_COUNTED
#endif
#endif

#ifndef SENSORVELA_CALLS_ARE_NOT_COUNTED
void* operator new(std::size_t size) {
  void* block = std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc)
  if (block == nullptr) std::abort();
  sensorvela::testing::bytes_in_use += static_cast<std::int64_t>(malloc_usable_size(block));
  ++sensorvela::testing::counts.allocations;
  return block;
}

// The standard library's does not use the one above with every sanitizer.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return operator new(size); }

void operator delete(void* block) noexcept {
  sensorvela::testing::bytes_in_use -= static_cast<std::int64_t>(malloc_usable_size(block));
  std::free(block);  // NOLINT(cppcoreguidelines-no-malloc)
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

// These replace the C library's functions, also for the libraries. They may be called at any time,
// so they must not need a lock themselves.

using Lock = int (*)(pthread_mutex_t*);

static Lock RealFunction(std::atomic<Lock>& real, const char* name) {
  if (real == nullptr) real = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, name));
  return real;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  static std::atomic<Lock> real = nullptr;
  ++sensorvela::testing::counts.locks;
  return RealFunction(real, "pthread_mutex_lock")(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) {
  static std::atomic<Lock> real = nullptr;
  const int result = RealFunction(real, "pthread_mutex_trylock")(mutex);
  if (result == 0) ++sensorvela::testing::counts.locks;
  return result;
}
#endif
