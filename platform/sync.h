// The library's interface to threads and time: an annotated lock, its scoped holder, a condition
// variable with a timed wait, a monotonic clock, and the start and the names of threads. The
// library uses everything else of the device through the device's own headers.
//
// The lock is the same everywhere. The rest has two implementations, one of which is linked:
// platform/android/ (the device) and platform/simulated/ (a workstation, with virtual time).
#pragma once

#include <pthread.h>
#include <sched.h>

#include <chrono>
#include <thread>

#include "thread_annotations.h"

namespace sensorvela::platform {

/// A non-recursive lock that inherits priority: while a thread waits for it, the thread that holds
/// it runs with the waiting thread's priority if that is higher. A real-time thread therefore waits
/// only while the lock is held, and not while a thread in between has the processor. Where the
/// system refuses such a lock, this is an ordinary one.
///
/// Its operations have the standard library's names, so that `std::condition_variable_any` can wait
/// with it.
class SENSORVELA_CAPABILITY("mutex") Mutex {
 public:
  [[gnu::noinline]] Mutex() noexcept {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    // A refusal leaves the protocol of an ordinary lock.
    pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
    if (pthread_mutex_init(&mutex_, &attributes) != 0) pthread_mutex_init(&mutex_, nullptr);
    pthread_mutexattr_destroy(&attributes);
  }
  ~Mutex() { pthread_mutex_destroy(&mutex_); }
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void lock() SENSORVELA_ACQUIRE() {
    if (__builtin_expect(pthread_mutex_trylock(&mutex_), 0) != 0) Wait();
  }
  void unlock() SENSORVELA_RELEASE() { pthread_mutex_unlock(&mutex_); }

 private:
  friend class CondVar;

  // The system hands a lock that inherits priority from thread to thread, with a switch of threads
  // each time, as long as any waits for it. A thread without real-time priority has none to lend,
  // so it first lets others run: threads that take a lock in close succession seldom wait for it.
  [[gnu::noinline]] void Wait() noexcept {
    constexpr int kYields = 3;
    for (int i = 0; i < kYields && sched_getscheduler(0) == SCHED_OTHER; ++i) {
      sched_yield();
      if (pthread_mutex_trylock(&mutex_) == 0) return;
    }
    pthread_mutex_lock(&mutex_);
  }

  pthread_mutex_t mutex_;
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
  ~CondVar() { pthread_cond_destroy(&condition_); }
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
  pthread_cond_t condition_ = PTHREAD_COND_INITIALIZER;
};

/// Starts a thread that calls `body` with `argument`. Throws `std::system_error` when the system
/// refuses the thread.
std::thread StartThread(void (*body)(void* argument), void* argument);

}  // namespace sensorvela::platform

#include "thread_annotations_end.h"
