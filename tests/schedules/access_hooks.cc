// What the compiler calls at each access of the code that it instruments with -fsanitize=thread.
// The sanitizer's runtime, which has these functions, is not linked.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "tests/schedules/explorer.h"
#include "tests/schedules/memory.h"

namespace {

void Access(const void* address, std::size_t size, bool writes) {
  if (!sensorvela::schedules::IsOfTheRun(address)) return;
  // A long access is decided about by its first bytes: a race is seen in either order.
  const auto eight_bytes = reinterpret_cast<std::uintptr_t>(address) / 8 * 8;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): only compared.
  const auto* const object = reinterpret_cast<const void*>(eight_bytes);
  sensorvela::schedules::Step({.name = writes ? "write" : "read", .uses = {{{object, writes}}}});
  sensorvela::schedules::Access(address, size, writes);
}

}  // namespace

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

// The count of a shared pointer. One thread has the service's, which the checker has allocated.
// Nothing that the engine shares between threads has one.
std::int64_t __tsan_atomic64_fetch_add(std::int64_t* count, std::int64_t more, int) {
  if (sensorvela::schedules::IsOfTheRun(count)) sensorvela::schedules::Fail("an atomic access");
  return std::exchange(*count, *count + more);
}

void __tsan_init() {}
void __tsan_func_entry(const void*) {}
void __tsan_func_exit() {}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
