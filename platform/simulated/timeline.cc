#include "platform/simulated/timeline.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace sensorvela::simulated {
namespace {

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "VirtualTime: %s\n", what);
  std::abort();
}

}  // namespace

// Never destroyed: engines may outlive the process's static objects.
Timeline& Timeline::Get() {
  static Timeline& timeline = *new Timeline;
  return timeline;
}

void Timeline::Begin(std::chrono::nanoseconds start) {
  const std::lock_guard lock(mutex_);
  Require(!is_virtual(), "there is one already");
  Require(engines_.empty(), "construct it before the first engine");
  now_ns_ = start.count();
  notifications_ = 0;
  is_virtual_ = true;
}

void Timeline::End() {
  const std::lock_guard lock(mutex_);
  Require(engines_.empty(), "destroy it after the last engine");
  is_virtual_ = false;
}

void Timeline::AddEngine(platform::CondVar* engine) {
  const std::lock_guard lock(mutex_);
  engines_.try_emplace(engine);
}

void Timeline::RemoveEngine(platform::CondVar* engine) {
  const std::lock_guard lock(mutex_);
  engines_.erase(engine);
  changed_.notify_all();
}

void Timeline::Sleep(platform::CondVar* engine, platform::Mutex& mutex,
                     std::condition_variable& wakeup, std::chrono::nanoseconds deadline) {
  std::unique_lock lock(mutex_);
  if (now() >= deadline) return;
  Sleeper& sleeper = engines_.at(engine);
  sleeper = {&wakeup, deadline};
  ++asleep_;
  changed_.notify_all();

  mutex.Unlock();
  wakeup.wait(lock, [&] { return sleeper.wakeup == nullptr; });
  lock.unlock();
  mutex.Lock();
}

void Timeline::Notify(platform::CondVar* engine) {
  const std::lock_guard lock(mutex_);
  ++notifications_;
  Wake(engines_.at(engine));
  changed_.notify_all();
}

void Timeline::AddBlocked() {
  const std::lock_guard lock(mutex_);
  ++blocked_;
  changed_.notify_all();
}

void Timeline::RemoveBlocked(std::size_t count) {
  const std::lock_guard lock(mutex_);
  blocked_ -= count;
  changed_.notify_all();
}

void Timeline::RunTo(std::chrono::nanoseconds instant) {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return Settled(); });
    std::optional<std::chrono::nanoseconds> next;
    for (const auto& [engine, sleeper] : engines_) {
      if (sleeper.wakeup != nullptr && sleeper.deadline <= instant) {
        next = next ? std::min(*next, sleeper.deadline) : sleeper.deadline;
      }
    }
    if (!next) break;
    now_ns_ = std::max(now(), *next).count();
    WakeDue();
  }
  now_ns_ = std::max(now(), instant).count();
}

void Timeline::MoveTo(std::chrono::nanoseconds instant, bool wake_due) {
  const std::lock_guard lock(mutex_);
  now_ns_ = std::max(now(), instant).count();
  if (wake_due) WakeDue();
}

void Timeline::WaitUntilAtRest() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return AtRest(); });
}

void Timeline::WaitUntilSettled() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return Settled(); });
}

void Timeline::WaitForNotifications(std::uint64_t count) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this, count] { return notifications_ >= count; });
}

void Timeline::Wake(Sleeper& sleeper) {
  if (sleeper.wakeup == nullptr) return;
  sleeper.wakeup->notify_all();
  sleeper.wakeup = nullptr;
  --asleep_;
}

void Timeline::WakeDue() {
  for (auto& [engine, sleeper] : engines_) {
    if (sleeper.deadline <= now()) Wake(sleeper);
  }
}

}  // namespace sensorvela::simulated
