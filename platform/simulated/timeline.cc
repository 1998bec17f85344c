#include "platform/simulated/timeline.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace sensorvela::simulated {

using platform::MutexLock;

namespace {

/// Leaves room for deadlines, and for suspensions that go on for as long.
constexpr std::chrono::nanoseconds kLatestStart = std::chrono::hours(24 * 365 * 100);

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "VirtualTime: %s\n", what);
  std::abort();
}

}  // namespace

std::chrono::nanoseconds SaturatingSum(std::chrono::nanoseconds a, std::chrono::nanoseconds b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a.count(), b.count(), &sum)) return std::chrono::nanoseconds(sum);
  return a.count() > 0 ? std::chrono::nanoseconds::max() : std::chrono::nanoseconds::min();
}

// Never destroyed: engines may outlive the process's static objects.
Timeline& Timeline::Get() {
  static Timeline& timeline = *new Timeline;
  return timeline;
}

void Timeline::Begin(std::chrono::nanoseconds start) {
  const MutexLock lock(mutex_);
  Require(!is_virtual(), "there is one already");
  Require(engines_.empty(), "construct it before the first engine");
  Require(start <= kLatestStart && start >= -kLatestStart, "start within a century of zero");
  elapsed_ns_ = start.count();
  monotonic_ns_ = start.count();
  notifications_ = 0;
  is_virtual_ = true;
}

void Timeline::End() {
  const MutexLock lock(mutex_);
  Require(engines_.empty(), "destroy it after the last engine");
  is_virtual_ = false;
  notification_observer_ = nullptr;
}

void Timeline::AddEngine(platform::CondVar* engine) {
  const MutexLock lock(mutex_);
  engines_.try_emplace(engine);
}

void Timeline::RemoveEngine(platform::CondVar* engine) {
  const MutexLock lock(mutex_);
  engines_.erase(engine);
  changed_.notify_all();
}

void Timeline::Sleep(platform::CondVar* engine, platform::Mutex& engine_mutex,
                     std::chrono::nanoseconds deadline) {
  {
    const MutexLock lock(mutex_);
    if (monotonic_now() >= deadline) return;
    Engine& sleeper = engines_.at(engine);
    sleeper.is_asleep = true;
    sleeper.deadline = deadline;
    ++asleep_;
    changed_.notify_all();

    engine_mutex.unlock();
    while (sleeper.is_asleep) sleeper.woken.wait(mutex_);
  }
  engine_mutex.lock();
}

void Timeline::Notify(platform::CondVar* engine) {
  if (notification_observer_) notification_observer_();
  const MutexLock lock(mutex_);
  ++notifications_;
  Wake(engines_.at(engine));
  changed_.notify_all();
}

void Timeline::AddBlocked() {
  const MutexLock lock(mutex_);
  ++blocked_;
  changed_.notify_all();
}

void Timeline::RemoveBlocked(std::size_t count) {
  const MutexLock lock(mutex_);
  blocked_ -= count;
  changed_.notify_all();
}

void Timeline::RunTo(std::chrono::nanoseconds instant) {
  const MutexLock lock(mutex_);
  for (;;) {
    while (!Settled()) changed_.wait(mutex_);
    const std::chrono::nanoseconds left = SaturatingSum(instant, -now());
    std::optional<std::chrono::nanoseconds> next;
    for (const auto& [id, engine] : engines_) {
      if (!engine.is_asleep) continue;
      const auto wait = std::max(SaturatingSum(engine.deadline, -monotonic_now()),
                                 std::chrono::nanoseconds::zero());
      if (wait <= left) next = next ? std::min(*next, wait) : wait;
    }
    if (!next) break;
    Advance(now() + *next);
    WakeDue();
  }
  Advance(instant);
}

void Timeline::MoveTo(std::chrono::nanoseconds instant, bool wake_due) {
  const MutexLock lock(mutex_);
  Advance(instant);
  if (wake_due) WakeDue();
}

void Timeline::Suspend(std::chrono::nanoseconds duration) {
  const MutexLock lock(mutex_);
  while (!Settled()) changed_.wait(mutex_);
  if (duration.count() > 0) elapsed_ns_ = SaturatingSum(now(), duration).count();
}

void Timeline::ReachDeadlines() {
  const MutexLock lock(mutex_);
  while (!Settled()) changed_.wait(mutex_);
  for (const auto& [id, engine] : engines_) {
    if (!engine.is_asleep) continue;
    monotonic_ns_ = std::max<std::int64_t>(monotonic_ns_, engine.deadline.count());
  }
}

void Timeline::WaitUntilAtRest() {
  const MutexLock lock(mutex_);
  while (!AtRest()) changed_.wait(mutex_);
}

void Timeline::WaitUntilSettled() {
  const MutexLock lock(mutex_);
  while (!Settled()) changed_.wait(mutex_);
}

void Timeline::WaitForNotifications(std::uint64_t count) {
  const MutexLock lock(mutex_);
  while (notifications_ < count) changed_.wait(mutex_);
}

void Timeline::Advance(std::chrono::nanoseconds instant) {
  if (instant <= now()) return;
  const std::chrono::nanoseconds step = SaturatingSum(instant, -now());
  // A sequentially consistent store would take longer than the rest, for each sample of a replay.
  elapsed_ns_.store(instant.count(), std::memory_order_release);
  monotonic_ns_.store(SaturatingSum(monotonic_now(), step).count(), std::memory_order_release);
}

void Timeline::Wake(Engine& engine) {
  if (!engine.is_asleep) return;
  engine.is_asleep = false;
  --asleep_;
  engine.woken.notify_all();
}

void Timeline::WakeDue() {
  for (auto& [id, engine] : engines_) {
    if (engine.deadline <= monotonic_now()) Wake(engine);
  }
}

}  // namespace sensorvela::simulated
