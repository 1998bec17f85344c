// The library's interface to threads and time: an annotated lock, its scoped holder, a condition
// variable with a timed wait, a monotonic clock, and the start and the names of threads. The
// library uses everything else of the device through the device's own headers.
//
// The lock is the same everywhere. The rest has two implementations, one of which is linked:
// platform/android/ (the device) and platform/simulated/ (a workstation, with virtual time).
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "thread_annotations.h"

namespace sensorvela::platform {

/// A non-recursive lock. Its operations have the standard library's names, so that
/// `std::condition_variable_any` can wait with it.
class SENSORVELA_CAPABILITY("mutex") Mutex {
 public:
  Mutex() = default;
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() SENSORVELA_ACQUIRE() { mutex_.lock(); }
  void unlock() SENSORVELA_RELEASE() { mutex_.unlock(); }

 private:
  friend class CondVar;
  std::mutex mutex_;
};

/// Holds a `Mutex` from its construction to the end of its scope.
class SENSORVELA_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) SENSORVELA_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() SENSORVELA_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

/// A clock that is never set back and stands still while the device is suspended. Its times are in
/// nanoseconds from an origin of its own. It satisfies the standard's Clock requirements.
class MonotonicClock {
 public:
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<MonotonicClock>;
  static constexpr bool is_steady = true;

  static time_point now() noexcept;
};

/// Gives the calling thread a name that shows in `top`, in traces and in crash reports. A name of
/// more than 15 characters is refused, and the thread keeps the one that it has.
void NameThisThread(const char* name);

/// A condition variable. One thread, which `StartThread` has started, waits on it, always with the
/// same mutex; any thread notifies it.
class CondVar {
 public:
  CondVar() = default;
  CondVar(const CondVar&) = delete;
  CondVar& operator=(const CondVar&) = delete;

  /// Releases `mutex`, sleeps until a notification, a spurious wake-up or `deadline`, and takes
  /// `mutex` again. Returns at once if the deadline has been reached. Does not say what ended the
  /// sleep: the caller checks its own state and the clock.
  void WaitUntil(Mutex& mutex, MonotonicClock::time_point deadline) SENSORVELA_REQUIRES(mutex);

  /// Wakes the thread that waits with `mutex`, if one does. The mutex is named only for Clang's
  /// proof that the caller holds it: the thread cannot check its state and then miss the
  /// notification.
  void NotifyAll(Mutex& mutex) SENSORVELA_REQUIRES(mutex);

 private:
  std::condition_variable cv_;
};

/// Starts a thread that calls `body` with `argument`. Throws `std::system_error` when the system
/// refuses the thread.
std::thread StartThread(void (*body)(void* argument), void* argument);

}  // namespace sensorvela::platform

#include "thread_annotations_end.h"
