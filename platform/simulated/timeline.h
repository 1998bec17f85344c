// The process's one timeline, shared by the simulated platform's clocks, condition variables and
// service manager. Internal to the simulated platform.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {

/// Each engine owns one condition variable and waits on it from one thread, so condition variables
/// stand for engines here: an engine is asleep, blocked in the service manager, or busy. Whoever
/// wakes a thread takes it off the count of sleepers at once, before the thread has run.
class Timeline {
 public:
  static Timeline& Get();

  bool is_virtual() const { return is_virtual_.load(std::memory_order_acquire); }
  std::chrono::nanoseconds now() const {
    return std::chrono::nanoseconds(now_ns_.load(std::memory_order_acquire));
  }

  void Begin(std::chrono::nanoseconds start);
  void End();

  void AddEngine(platform::CondVar* engine);
  void RemoveEngine(platform::CondVar* engine);

  /// The virtual side of `CondVar::WaitUntil`; `wakeup` is the condition variable's own.
  void Sleep(platform::CondVar* engine, platform::Mutex& mutex, std::condition_variable& wakeup,
             std::chrono::nanoseconds deadline) SENSORVELA_REQUIRES(mutex);

  /// The virtual side of `CondVar::NotifyAll`.
  void Notify(platform::CondVar* engine);

  /// A reporter thread enters, and is released from, a blocked call into the service manager.
  void AddBlocked();
  void RemoveBlocked(std::size_t count);

  void RunTo(std::chrono::nanoseconds instant);
  void MoveTo(std::chrono::nanoseconds instant, bool wake_due);
  void WaitUntilAtRest();
  void WaitUntilSettled();
  std::uint64_t notifications() const { return notifications_.load(std::memory_order_acquire); }
  void WaitForNotifications(std::uint64_t count);

 private:
  struct Sleeper {
    std::condition_variable* wakeup = nullptr;  // Null while the engine is awake.
    std::chrono::nanoseconds deadline{};
  };

  bool AtRest() const { return asleep_ == engines_.size(); }
  bool Settled() const { return asleep_ + blocked_ == engines_.size(); }
  void Wake(Sleeper& sleeper);
  void WakeDue();

  std::atomic<bool> is_virtual_ = false;
  std::atomic<std::int64_t> now_ns_ = 0;
  std::atomic<std::uint64_t> notifications_ = 0;  // Changed under the mutex only.

  std::mutex mutex_;  // Guards all that follows; taken after an engine's own mutex.
  std::condition_variable changed_;
  std::map<platform::CondVar*, Sleeper> engines_;
  std::size_t asleep_ = 0;
  std::size_t blocked_ = 0;
};

}  // namespace sensorvela::simulated

#include "platform/thread_annotations_end.h"
