#include "platform/simulated/virtual_time.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <ranges>
#include <utility>

#include "platform/simulated/timeline.h"

namespace sensorvela::simulated {

using platform::MutexLock;
using std::chrono::nanoseconds;

namespace {

/// Leaves room for deadlines, and for suspensions that go on for as long.
constexpr nanoseconds kLatestStart = std::chrono::hours(24 * 365 * 100);

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "VirtualTime: %s\n", what);
  std::abort();
}

}  // namespace

VirtualTime::VirtualTime(Instant start) {
  const MutexLock lock(timeline.mutex);
  Require(!timeline.is_virtual, "there is one already");
  Require(timeline.threads == 0, "construct it before the first engine");
  Require(start <= kLatestStart && start >= -kLatestStart, "start within a century of zero");
  timeline.elapsed = start;
  timeline.monotonic = start;
  timeline.notifications = 0;
  timeline.is_virtual = true;
}

VirtualTime::~VirtualTime() {
  const MutexLock lock(timeline.mutex);
  Require(timeline.threads == 0, "destroy it after the last engine");
  timeline.is_virtual = false;
  timeline.notifications_wake = true;
  timeline.notification_observer = nullptr;
}

VirtualTime::Instant VirtualTime::Now() const { return timeline.elapsed; }

void VirtualTime::Suspend(nanoseconds duration) {
  const MutexLock lock(timeline.mutex);
  timeline.WaitUntilSettled();
  if (duration.count() > 0) timeline.elapsed = SaturatingSum(timeline.elapsed, duration);
}

void VirtualTime::RunTo(Instant instant) {
  for (bool goes_on = true; goes_on;) {
    std::function<void()> ring;
    {
      const MutexLock lock(timeline.mutex);
      timeline.WaitUntilSettled();
      goes_on = timeline.GoToNext(instant, ring);
      if (!goes_on) timeline.Advance(instant);
    }
    if (ring) ring();
  }
}

void VirtualTime::RunFor(nanoseconds duration) { RunTo(SaturatingSum(Now(), duration)); }

void VirtualTime::JumpTo(Instant instant) {
  const MutexLock lock(timeline.mutex);
  timeline.Advance(instant);
  timeline.WakeDue();
}

void VirtualTime::SlipTo(Instant instant) {
  const MutexLock lock(timeline.mutex);
  timeline.Advance(instant);
}

void VirtualTime::SetNotificationsWake(bool wake) {
  const MutexLock lock(timeline.mutex);
  timeline.notifications_wake = wake;
}

void VirtualTime::WakeAll() {
  const MutexLock lock(timeline.mutex);
  timeline.asleep.clear();
  timeline.changed.notify_all();
}

void VirtualTime::ReachDeadlines() {
  const MutexLock lock(timeline.mutex);
  timeline.WaitUntilSettled();
  for (const nanoseconds deadline : std::views::values(timeline.asleep)) {
    timeline.monotonic = std::max(timeline.monotonic.load(), deadline);
  }
}

void VirtualTime::WaitUntilAtRest() {
  const MutexLock lock(timeline.mutex);
  while (std::ssize(timeline.asleep) != timeline.threads) timeline.changed.wait(timeline.mutex);
}

void VirtualTime::WaitUntilSettled() {
  const MutexLock lock(timeline.mutex);
  timeline.WaitUntilSettled();
}

std::uint64_t VirtualTime::Notifications() const { return timeline.notifications; }

void VirtualTime::WaitForNotifications(std::uint64_t count) {
  const MutexLock lock(timeline.mutex);
  while (timeline.notifications < count) timeline.changed.wait(timeline.mutex);
}

void VirtualTime::ObserveNotifications(std::function<void()> observer) {
  const MutexLock lock(timeline.mutex);
  Require(timeline.threads == 0, "observe before the first engine");
  timeline.notification_observer = std::move(observer);
}

}  // namespace sensorvela::simulated
