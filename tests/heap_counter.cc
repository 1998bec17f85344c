#include "tests/heap_counter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace sensorvela::testing {
namespace {

std::atomic<std::int64_t> bytes_in_use = 0;
thread_local std::int64_t allocations = 0;

}  // namespace

std::int64_t HeapBytesInUse() { return bytes_in_use; }
std::int64_t AllocationsOfThisThread() { return allocations; }

}  // namespace sensorvela::testing

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SENSORVELA_HEAP_IS_NOT_COUNTED
#endif
#endif

#if !defined(SENSORVELA_HEAP_IS_NOT_COUNTED)
void* operator new(std::size_t size) {
  void* block = std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc)
  if (block == nullptr) std::abort();
  sensorvela::testing::bytes_in_use += static_cast<std::int64_t>(malloc_usable_size(block));
  ++sensorvela::testing::allocations;
  return block;
}

void operator delete(void* block) noexcept {
  sensorvela::testing::bytes_in_use -= static_cast<std::int64_t>(malloc_usable_size(block));
  std::free(block);  // NOLINT(cppcoreguidelines-no-malloc)
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
#endif
