// The memory that the threads of a run allocate, and the order of their accesses to it.
//
// Memory is not used twice in a run, so that every access after a free is seen. Two accesses are
// ordered if a chain of thread starts, joins, and releases and acquisitions of locks leads from one
// to the other. Two that are not, one of them a write, are a race, in whichever order they come.
#pragma once

#include <cstddef>

namespace sensorvela::schedules {

/// Frees everything and forgets all accesses.
void ResetMemory();

/// Whether a thread of the run that is on has allocated the address.
bool IsOfTheRun(const void* address);

/// An access of the thread that runs. Fails the run if it is a race, or the memory is freed. Other
/// memory than the run's is not checked.
void Access(const void* address, std::size_t size, bool writes);

/// Whether the run has allocated the address and freed it since.
bool IsFreed(const void* address);

/// What the thread that runs has done so far comes before all that `thread` does.
void OrderBeforeThread(int thread);

/// What the thread that runs has done so far comes before what a thread does that acquires `object`
/// later.
void Release(const void* object);
void Acquire(const void* object);

/// While one exists, a thread of the run allocates memory of the checker instead.
class CheckerMemory {
 public:
  CheckerMemory();
  ~CheckerMemory();
  CheckerMemory(const CheckerMemory&) = delete;
  CheckerMemory& operator=(const CheckerMemory&) = delete;
};

}  // namespace sensorvela::schedules
