// The state of virtual time, which the simulated platform's clocks, condition variables and service
// manager share. Internal to the simulated platform.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {

/// The process's one timeline. From before it runs until it ends, a reporter thread is asleep in
/// its timed wait, waiting (in the service manager or in a `ReporterWait`), or busy. Whoever wakes
/// a thread also marks it as busy, before the thread has run.
struct Timeline {
  /// Before a reporter thread runs.
  void ThreadBegins() SENSORVELA_EXCLUDES(mutex);
  /// After it has run, or if the system has refused it.
  void ThreadEnds() SENSORVELA_EXCLUDES(mutex);
  /// Adds `number`, which may be negative, to the threads that wait.
  void AddWaiting(std::ptrdiff_t number) SENSORVELA_EXCLUDES(mutex);

  /// `CondVar::WaitUntil` in virtual time, for a reporter thread that waits with `engine_mutex`.
  void Sleep(const platform::CondVar* condition, platform::Mutex& engine_mutex,
             std::chrono::nanoseconds deadline) SENSORVELA_REQUIRES(engine_mutex)
      SENSORVELA_EXCLUDES(mutex);
  /// `CondVar::NotifyAll` in virtual time.
  void Notify(const platform::CondVar* condition) SENSORVELA_EXCLUDES(mutex);

  /// Calls `ring` when the monotonic clock reaches `at` on its way, on the thread that moves it,
  /// without the mutex and with every engine settled. In place of the owner's alarm before.
  void SetAlarm(const void* owner, std::chrono::nanoseconds at, std::function<void()> ring)
      SENSORVELA_EXCLUDES(mutex);
  void ClearAlarm(const void* owner) SENSORVELA_EXCLUDES(mutex);

  void WaitUntilSettled() SENSORVELA_REQUIRES(mutex);
  /// The clocks go on to the next deadline or alarm, if it comes by `instant`. Wakes the threads
  /// whose deadline has been reached; sets `ring` if it is an alarm, which comes first. Otherwise
  /// returns false.
  bool GoToNext(std::chrono::nanoseconds instant, std::function<void()>& ring)
      SENSORVELA_REQUIRES(mutex);
  /// Both clocks go on until elapsed realtime is `instant`, if that is later.
  void Advance(std::chrono::nanoseconds instant) SENSORVELA_REQUIRES(mutex);
  /// Wakes every thread whose deadline has been reached.
  void WakeDue() SENSORVELA_REQUIRES(mutex);

  // Changed under the mutex only.
  std::atomic<bool> is_virtual = false;
  std::atomic<std::chrono::nanoseconds> elapsed = std::chrono::nanoseconds::zero();
  /// Elapsed realtime without the time in which the device was suspended.
  std::atomic<std::chrono::nanoseconds> monotonic = std::chrono::nanoseconds::zero();
  std::atomic<std::uint64_t> notifications = 0;

  /// Called without the mutex. Changed only while there is no reporter thread.
  std::function<void()> notification_observer;

  platform::Mutex mutex;
  /// Notified whenever a thread or a waiting caller of `VirtualTime` may have to go on.
  std::condition_variable_any changed;
  bool notifications_wake SENSORVELA_GUARDED_BY(mutex) = true;
  std::ptrdiff_t threads SENSORVELA_GUARDED_BY(mutex) = 0;
  std::ptrdiff_t waiting SENSORVELA_GUARDED_BY(mutex) = 0;
  /// The deadline, on the monotonic clock, of each thread that is asleep, by the condition variable
  /// that it alone waits on.
  std::map<const platform::CondVar*, std::chrono::nanoseconds> asleep SENSORVELA_GUARDED_BY(mutex);

  struct Alarm {
    std::chrono::nanoseconds at;
    std::function<void()> ring;
  };
  std::map<const void*, Alarm> alarms SENSORVELA_GUARDED_BY(mutex);
};

/// Never destroyed: engines may outlive the process's static objects. Like those of the other files
/// here it is made when this shared library is loaded, before whatever links the library.
extern Timeline& timeline;

/// The sum, or the limit that it would pass.
inline std::chrono::nanoseconds SaturatingSum(std::chrono::nanoseconds a,
                                              std::chrono::nanoseconds b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a.count(), b.count(), &sum)) return std::chrono::nanoseconds(sum);
  return a.count() > 0 ? std::chrono::nanoseconds::max() : std::chrono::nanoseconds::min();
}

}  // namespace sensorvela::simulated

#include "platform/thread_annotations_end.h"
