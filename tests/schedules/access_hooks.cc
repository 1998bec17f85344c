// What the compiler calls at each access of the code that it instruments with -fsanitize=thread.
// The sanitizer's runtime, which has these functions, is not linked.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tests/schedules/explorer.h"
#include "tests/schedules/memory.h"

using sensorvela::schedules::Access;

// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the compiler's names.
#define SENSORVELA_ACCESS_HOOKS(size)                                                     \
  void __tsan_read##size(const void* address) { Access(address, size, false); }           \
  void __tsan_write##size(const void* address) { Access(address, size, true); }           \
  void __tsan_unaligned_read##size(const void* address) { Access(address, size, false); } \
  void __tsan_unaligned_write##size(const void* address) { Access(address, size, true); }

extern "C" {

SENSORVELA_ACCESS_HOOKS(1)
SENSORVELA_ACCESS_HOOKS(2)
SENSORVELA_ACCESS_HOOKS(4)
SENSORVELA_ACCESS_HOOKS(8)
SENSORVELA_ACCESS_HOOKS(16)
void __tsan_vptr_read(const void* address) { Access(address, sizeof(void*), false); }
void __tsan_vptr_update(const void* address, const void*) { Access(address, sizeof(void*), true); }

void* __tsan_memcpy(void* to, const void* from, std::size_t size) {
  Access(from, size, false);
  Access(to, size, true);
  return std::memcpy(to, from, size);
}
void* __tsan_memmove(void* to, const void* from, std::size_t size) {
  Access(from, size, false);
  Access(to, size, true);
  return std::memmove(to, from, size);
}
void* __tsan_memset(void* to, int byte, std::size_t size) {
  Access(to, size, true);
  return std::memset(to, byte, size);
}

// The count of a shared pointer. Nothing that the engine shares between threads has one.
std::int64_t __tsan_atomic64_fetch_add(std::int64_t* count, std::int64_t more, int) {
  sensorvela::schedules::Fail("an atomic access");
  return *count += more;
}

void __tsan_init() {}
void __tsan_func_entry(const void*) {}
void __tsan_func_exit() {}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
