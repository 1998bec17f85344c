// Virtual time: the platform's two clocks, which move only when a program moves them.
#pragma once

#include <chrono>
#include <cstdint>

namespace sensorvela::simulated {

/// While one exists, elapsed realtime and the monotonic clock read its instant, and a reporter
/// thread's timed wait ends by notification or by this timeline alone. Instants are nanoseconds
/// from the timeline's own zero.
///
/// Construct it before the first engine and destroy it after the last, one at a time; anything else
/// aborts. Meanwhile only reporter threads may wait in the service manager. An engine whose thread
/// could not start never comes to rest and cannot be told from one that is busy. Its operations may
/// be called from any thread, but those that wait for an engine not from that engine's own.
class VirtualTime {
 public:
  using Instant = std::chrono::nanoseconds;

  explicit VirtualTime(Instant start = Instant::zero());
  ~VirtualTime();
  VirtualTime(const VirtualTime&) = delete;
  VirtualTime& operator=(const VirtualTime&) = delete;

  /// The instant on elapsed realtime, which all instants here are on.
  Instant Now() const;

  /// The instant on the monotonic clock, which the engine's cycle is on: elapsed realtime without
  /// the time in which the device was suspended.
  Instant MonotonicNow() const;

  /// The device is suspended for that long: elapsed realtime goes on, while the monotonic clock and
  /// every timed wait stand still. Begins settled. A negative duration suspends for no time.
  void Suspend(Instant duration);

  /// Moves the clocks to `instant` as an idle device would live through it: every deadline on the
  /// way is reached at its own instant, and what it wakes runs until settled before time goes on.
  /// Begins and ends settled. An instant in the past moves nothing.
  void RunTo(Instant instant);

  /// Moves the clocks in one step and wakes every sleeper whose deadline has been reached. Waits
  /// for nobody.
  void JumpTo(Instant instant);

  /// Moves the clocks in one step and wakes nobody, as when a deadline passes between a sleeper's
  /// notification and its next look at the clock.
  void SlipTo(Instant instant);

  /// Returns once every engine is at rest: its reporter thread asleep in its timed wait, nothing
  /// queued.
  void WaitUntilAtRest();

  /// Returns once every engine is settled: at rest, or its reporter thread blocked in
  /// `AServiceManager_waitForService`. Nothing more happens then until somebody acts.
  void WaitUntilSettled();

  /// How often an engine has been notified so far: once for each atom queued and once by each
  /// engine's destruction.
  std::uint64_t Notifications() const;

  /// Returns once `Notifications()` has reached `count`.
  void WaitForNotifications(std::uint64_t count);
};

}  // namespace sensorvela::simulated
