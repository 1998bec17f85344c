#include "tests/schedules/memory.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>

#include "tests/schedules/explorer.h"

namespace sensorvela::schedules {
namespace {

/// For each thread, how many of its releases are known to have come before.
using Clock = std::array<std::uint16_t, kMaxThreads>;

/// The last accesses of each thread to four bytes, by the threads' own clocks; 0: none.
struct Cell {
  Clock reads;
  Clock writes;
  bool freed;
};

constexpr std::size_t kCellSize = 4;
constexpr std::size_t kArenaSize = std::size_t{1} << 20;
/// Each block has its size before it.
constexpr std::size_t kHeaderSize = 16;

struct Memory {
  alignas(16) std::array<std::byte, kArenaSize> arena;
  std::array<Cell, kArenaSize / kCellSize> cells;
  std::size_t used = 0;
  std::array<Clock, kMaxThreads> threads;
  std::map<const void*, Clock> objects;
  int checkers = 0;
} memory;

std::size_t Current() { return static_cast<std::size_t>(CurrentThread()); }

/// Where the address is in the arena; at least `kArenaSize` if it is not.
std::size_t OffsetOf(const void* address) {
  return reinterpret_cast<std::uintptr_t>(address) -
         reinterpret_cast<std::uintptr_t>(memory.arena.data());
}

void Merge(Clock& to, const Clock& from) {
  std::transform(to.begin(), to.end(), from.begin(), to.begin(),
                 [](std::uint16_t a, std::uint16_t b) { return std::max(a, b); });
}

bool IsBefore(const Clock& accesses, const Clock& now) {
  return std::equal(accesses.begin(), accesses.end(), now.begin(), std::less_equal());
}

void AccessCell(Cell& cell, bool writes) {
  const Clock& now = memory.threads[Current()];
  if (cell.freed) Fail("an access to freed memory");
  if (!IsBefore(cell.writes, now) || (writes && !IsBefore(cell.reads, now))) Fail("a data race");
  (writes ? cell.writes : cell.reads)[Current()] = now[Current()];
}

void* Allocate(std::size_t size) {
  if (CurrentThread() < 0 || memory.checkers > 0) {
    void* const block = std::malloc(size);  // NOLINT(cppcoreguidelines-no-malloc): operator new.
    if (block == nullptr) std::abort();
    return block;
  }
  const std::size_t needed = kHeaderSize + (size + kHeaderSize - 1) / kHeaderSize * kHeaderSize;
  if (needed > kArenaSize - memory.used) Fail("out of memory");
  std::byte* const header = memory.arena.data() + memory.used;
  memory.used += needed;
  *reinterpret_cast<std::size_t*>(header) = size;
  return header + kHeaderSize;
}

void Free(void* block) {
  const std::size_t offset = OffsetOf(block);
  if (offset >= kArenaSize) {
    std::free(block);  // NOLINT(cppcoreguidelines-no-malloc): operator delete.
    return;
  }
  const std::size_t size =
      *reinterpret_cast<std::size_t*>(static_cast<std::byte*>(block) - kHeaderSize);
  Access(block, size, true);  // It must come after all other accesses.
  for (std::size_t i = offset; i < offset + size; i += kCellSize) {
    memory.cells[i / kCellSize].freed = true;
  }
}

}  // namespace

void ResetMemory() {
  std::fill_n(memory.cells.begin(), memory.used / kCellSize, Cell{});
  memory.used = 0;
  memory.checkers = 0;
  memory.objects.clear();
  memory.threads = {};
  for (std::size_t thread = 0; thread < kMaxThreads; ++thread) memory.threads[thread][thread] = 1;
}

bool IsOfTheRun(const void* address) {
  return CurrentThread() >= 0 && OffsetOf(address) < memory.used;
}

void Access(const void* address, std::size_t size, bool writes) {
  if (!IsOfTheRun(address)) return;
  const std::size_t offset = OffsetOf(address);
  for (std::size_t i = offset / kCellSize; i * kCellSize < offset + size; ++i) {
    AccessCell(memory.cells[i], writes);
  }
}

bool IsFreed(const void* address) {
  return IsOfTheRun(address) && memory.cells[OffsetOf(address) / kCellSize].freed;
}

void OrderBeforeThread(int thread) {
  Clock& now = memory.threads[Current()];
  Merge(memory.threads[static_cast<std::size_t>(thread)], now);
  ++now[Current()];
}

void Release(const void* object) {
  const CheckerMemory checker_memory;
  Clock& now = memory.threads[Current()];
  Merge(memory.objects[object], now);
  ++now[Current()];
}

void Acquire(const void* object) {
  const CheckerMemory checker_memory;
  Merge(memory.threads[Current()], memory.objects[object]);
}

CheckerMemory::CheckerMemory() { ++memory.checkers; }
CheckerMemory::~CheckerMemory() { --memory.checkers; }

}  // namespace sensorvela::schedules

void* operator new(std::size_t size) { return sensorvela::schedules::Allocate(size); }
void operator delete(void* block) noexcept { sensorvela::schedules::Free(block); }
void operator delete(void* block, std::size_t) noexcept { sensorvela::schedules::Free(block); }
