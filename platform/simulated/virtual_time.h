// Virtual time for the platform's two clocks. It moves only by explicit calls, and a caller can
// wait until the engines have nothing left to do.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace sensorvela::simulated {

/// While a `VirtualTime` exists, it sets elapsed realtime and the monotonic clock, and only a
/// notification or this timeline ends a reporter thread's timed wait. Both clocks begin at `start`.
/// Instants are nanoseconds of elapsed realtime.
///
/// Construct it before the first engine and destroy it after the last; only one may exist at a
/// time. Otherwise the process aborts. While it exists, only reporter threads may wait in the
/// service manager or on a `platform::CondVar`. An engine whose thread the system refused does not
/// exist for virtual time.
///
/// Any thread may call any operation, except that an engine's reporter thread must not call one
/// that waits for its engine.
class VirtualTime {
 public:
  using Instant = std::chrono::nanoseconds;

  /// `start` is at most a century from zero.
  explicit VirtualTime(Instant start = Instant::zero());
  ~VirtualTime();
  VirtualTime(const VirtualTime&) = delete;
  VirtualTime& operator=(const VirtualTime&) = delete;

  Instant Now() const;

  /// The device is suspended for that long: elapsed realtime goes on, while the monotonic clock and
  /// every timed wait stand still. Every engine is settled first. A negative duration counts as 0.
  void Suspend(std::chrono::nanoseconds duration);

  /// Moves the clocks to `instant` and stops at every deadline on the way: the engines that it
  /// wakes run until they are settled before time moves on. A `ServiceProcess` takes its atoms on
  /// the way, too. Every engine is settled before time first moves and when this returns. An
  /// instant in the past moves nothing.
  void RunTo(Instant instant);

  /// `RunTo(Now() + duration)`; a sum past the latest instant means the latest.
  void RunFor(std::chrono::nanoseconds duration);

  /// Moves the clocks in one step and wakes every engine whose deadline has been reached. Does not
  /// wait. What a `ServiceProcess` would have taken meanwhile it takes in the next `RunTo`.
  void JumpTo(Instant instant);

  /// Moves the clocks in one step and wakes no engine, as when a deadline passes between an
  /// engine's notification and its next reading of the clock.
  void SlipTo(Instant instant);

  // For a run in which a recording tells when a reporter thread woke up and when a cycle ended, and
  // not the notifications and the clock.

  /// Whether a notification wakes the engine that sleeps, as it does at first.
  void SetNotificationsWake(bool wake);

  /// Wakes every engine that sleeps, and does not wait.
  void WakeAll();

  /// The monotonic clock goes on alone until every deadline that an engine sleeps for has been
  /// reached. Every engine is settled first, and none wakes up.
  void ReachDeadlines();

  /// Returns once every engine is at rest: its reporter thread is in its timed wait and its queue
  /// is empty.
  void WaitUntilAtRest();

  /// Returns once every engine is settled: at rest, or its reporter thread waiting in
  /// `AServiceManager_waitForService`, for a `ServiceProcess` or in a `ReporterWait`. The engines
  /// then do nothing more until time moves, or somebody calls them or the service manager or ends
  /// the wait.
  void WaitUntilSettled();

  /// The number of notifications of all engines so far: one for each atom queued and one for each
  /// engine's destruction.
  std::uint64_t Notifications() const;

  /// Returns once `Notifications()` has reached `count`.
  void WaitForNotifications(std::uint64_t count);

  /// Calls `observer` at each notification, on the thread that notifies and with the engine's queue
  /// locked, before the reporter thread wakes up. It must not call the engine or wait for it. To be
  /// called before the first engine is constructed.
  void ObserveNotifications(std::function<void()> observer);
};

}  // namespace sensorvela::simulated
