// The process's one timeline, shared by the simulated platform's clocks, condition variables and
// service manager. Internal to the simulated platform.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {

/// The sum, or the limit that it would pass.
std::chrono::nanoseconds SaturatingSum(std::chrono::nanoseconds a, std::chrono::nanoseconds b);

/// Each engine owns one condition variable, on which one thread waits, so the timeline identifies
/// an engine by its condition variable, from the start of that thread to the destruction. An engine
/// is asleep, blocked in the service manager, or busy. The thread that wakes an engine also marks
/// it as busy, before the woken thread has run.
class Timeline {
 public:
  static Timeline& Get();

  bool is_virtual() const { return is_virtual_.load(std::memory_order_acquire); }
  /// Elapsed realtime.
  std::chrono::nanoseconds now() const {
    return std::chrono::nanoseconds(elapsed_ns_.load(std::memory_order_acquire));
  }
  /// Elapsed realtime without the time in which the device was suspended.
  std::chrono::nanoseconds monotonic_now() const {
    return std::chrono::nanoseconds(monotonic_ns_.load(std::memory_order_acquire));
  }

  void Begin(std::chrono::nanoseconds start) SENSORVELA_EXCLUDES(mutex_);
  void End() SENSORVELA_EXCLUDES(mutex_);

  void AddEngine(platform::CondVar* engine) SENSORVELA_EXCLUDES(mutex_);
  void RemoveEngine(platform::CondVar* engine) SENSORVELA_EXCLUDES(mutex_);

  /// `CondVar::WaitUntil` in virtual time.
  void Sleep(platform::CondVar* engine, platform::Mutex& engine_mutex,
             std::chrono::nanoseconds deadline) SENSORVELA_REQUIRES(engine_mutex)
      SENSORVELA_EXCLUDES(mutex_);

  /// `CondVar::NotifyAll` in virtual time.
  void Notify(platform::CondVar* engine) SENSORVELA_EXCLUDES(mutex_);

  /// One reporter thread begins to block in the service manager; `count` blocked threads are
  /// released.
  void AddBlocked() SENSORVELA_EXCLUDES(mutex_);
  void RemoveBlocked(std::size_t count) SENSORVELA_EXCLUDES(mutex_);

  void RunTo(std::chrono::nanoseconds instant) SENSORVELA_EXCLUDES(mutex_);
  void MoveTo(std::chrono::nanoseconds instant, bool wake_due) SENSORVELA_EXCLUDES(mutex_);
  void Suspend(std::chrono::nanoseconds duration) SENSORVELA_EXCLUDES(mutex_);
  void ReachDeadlines() SENSORVELA_EXCLUDES(mutex_);
  void WaitUntilAtRest() SENSORVELA_EXCLUDES(mutex_);
  void WaitUntilSettled() SENSORVELA_EXCLUDES(mutex_);
  std::uint64_t notifications() const { return notifications_.load(std::memory_order_acquire); }
  void WaitForNotifications(std::uint64_t count) SENSORVELA_EXCLUDES(mutex_);
  void ObserveNotifications(std::function<void()> observer) {
    notification_observer_ = std::move(observer);
  }

 private:
  struct Engine {
    bool is_asleep = false;
    std::chrono::nanoseconds deadline{};  // Of the monotonic clock.
    std::condition_variable_any woken;
  };

  bool AtRest() const SENSORVELA_REQUIRES(mutex_) { return asleep_ == engines_.size(); }
  bool Settled() const SENSORVELA_REQUIRES(mutex_) { return asleep_ + blocked_ == engines_.size(); }
  /// Both clocks go on until elapsed realtime is `instant`, if that is later.
  void Advance(std::chrono::nanoseconds instant) SENSORVELA_REQUIRES(mutex_);
  void Wake(Engine& engine) SENSORVELA_REQUIRES(mutex_);
  void WakeDue() SENSORVELA_REQUIRES(mutex_);

  std::atomic<bool> is_virtual_ = false;
  // Changed under the mutex only.
  std::atomic<std::int64_t> elapsed_ns_ = 0;
  std::atomic<std::int64_t> monotonic_ns_ = 0;
  std::atomic<std::uint64_t> notifications_ = 0;

  /// Called without the mutex. Set while there is no engine.
  std::function<void()> notification_observer_;

  platform::Mutex mutex_;
  std::condition_variable_any changed_;
  std::map<platform::CondVar*, Engine> engines_ SENSORVELA_GUARDED_BY(mutex_);
  std::size_t asleep_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  std::size_t blocked_ SENSORVELA_GUARDED_BY(mutex_) = 0;
};

}  // namespace sensorvela::simulated

#include "platform/thread_annotations_end.h"
