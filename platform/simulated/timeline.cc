#include "platform/simulated/timeline.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <ranges>
#include <utility>

namespace sensorvela::simulated {

using platform::MutexLock;
using std::chrono::nanoseconds;

Timeline& timeline = *new Timeline;

void Timeline::ThreadBegins() {
  const MutexLock lock(mutex);
  ++threads;
}

void Timeline::ThreadEnds() {
  const MutexLock lock(mutex);
  --threads;
  changed.notify_all();
}

void Timeline::AddWaiting(std::ptrdiff_t number) {
  const MutexLock lock(mutex);
  waiting += number;
  changed.notify_all();
}

void Timeline::Sleep(const platform::CondVar* condition, platform::Mutex& engine_mutex,
                     nanoseconds deadline) {
  {
    const MutexLock lock(mutex);
    if (monotonic.load() >= deadline) return;
    asleep.emplace(condition, deadline);
    changed.notify_all();

    engine_mutex.unlock();
    while (asleep.contains(condition)) changed.wait(mutex);
  }
  engine_mutex.lock();
}

void Timeline::Notify(const platform::CondVar* condition) {
  if (notification_observer) notification_observer();
  const MutexLock lock(mutex);
  ++notifications;
  if (notifications_wake) asleep.erase(condition);
  changed.notify_all();
}

void Timeline::SetAlarm(const void* owner, nanoseconds at, std::function<void()> ring) {
  const MutexLock lock(mutex);
  alarms.insert_or_assign(owner, Alarm{at, std::move(ring)});
}

void Timeline::ClearAlarm(const void* owner) {
  const MutexLock lock(mutex);
  alarms.erase(owner);
}

bool Timeline::GoToNext(nanoseconds instant, std::function<void()>& ring) {
  const auto deadlines = std::views::values(asleep);
  const auto deadline = std::ranges::min_element(deadlines);
  const auto alarm =
      std::ranges::min_element(alarms, {}, [](const auto& each) { return each.second.at; });
  if (deadline == deadlines.end() && alarm == alarms.end()) return false;
  const bool is_alarm =
      alarm != alarms.end() && (deadline == deadlines.end() || alarm->second.at <= *deadline);
  const nanoseconds next = is_alarm ? alarm->second.at : *deadline;
  const nanoseconds wait = std::max(SaturatingSum(next, -monotonic.load()), nanoseconds::zero());
  if (wait > SaturatingSum(instant, -elapsed.load())) return false;
  Advance(elapsed.load() + wait);
  if (is_alarm) {
    ring = std::move(alarm->second.ring);
    alarms.erase(alarm);
  } else {
    WakeDue();
  }
  return true;
}

void Timeline::WaitUntilSettled() {
  while (std::ssize(asleep) + waiting != threads) changed.wait(mutex);
}

void Timeline::Advance(nanoseconds instant) {
  const nanoseconds step = SaturatingSum(instant, -elapsed.load());
  if (step.count() <= 0) return;
  // A sequentially consistent store would take longer than the rest, for each sample of a replay.
  elapsed.store(instant, std::memory_order_release);
  monotonic.store(SaturatingSum(monotonic, step), std::memory_order_release);
}

void Timeline::WakeDue() {
  const auto is_due = [now = monotonic.load()](const auto& each) { return each.second <= now; };
  if (std::erase_if(asleep, is_due) > 0) changed.notify_all();
}

}  // namespace sensorvela::simulated
