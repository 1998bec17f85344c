// The workstation's implementation of platform/sync.h and of elapsed realtime: the real clocks, or
// virtual time while a `VirtualTime` exists.
#include "platform/sync.h"

#include <pthread.h>
#include <time.h>
#include <utils/SystemClock.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>

#include "platform/simulated/timeline.h"

namespace sensorvela::platform {

using simulated::Timeline;

MonotonicClock::time_point MonotonicClock::now() noexcept {
  const Timeline& timeline = Timeline::Get();
  if (timeline.is_virtual()) return time_point(timeline.monotonic_now());
  return time_point(std::chrono::steady_clock::now().time_since_epoch());
}

// The one failure is a name that is too long, and it would cost only the name.
void NameThisThread(const char* name) { pthread_setname_np(pthread_self(), name); }

CondVar::CondVar() = default;
CondVar::~CondVar() { Timeline::Get().RemoveEngine(this); }

void CondVar::WaitUntil(Mutex& mutex, MonotonicClock::time_point deadline) {
  Timeline& timeline = Timeline::Get();
  if (timeline.is_virtual()) {
    timeline.Sleep(this, mutex, deadline.time_since_epoch());
    return;
  }
  std::unique_lock lock(mutex.mutex_, std::adopt_lock);
  cv_.wait_until(lock, std::chrono::steady_clock::time_point(deadline.time_since_epoch()));
  lock.release();  // Leaves `mutex` locked, as the caller had it.
}

void CondVar::NotifyAll(Mutex& /*mutex*/) {
  Timeline& timeline = Timeline::Get();
  if (timeline.is_virtual()) {
    timeline.Notify(this);
  } else {
    cv_.notify_all();
  }
}

// The thread is busy before it runs. A refused one leaves nothing behind: nobody destroys its
// condition variable, because the library is built without exceptions.
std::thread StartThread(CondVar& condition, void (*body)(void* argument), void* argument) {
  Timeline& timeline = Timeline::Get();
  timeline.AddEngine(&condition);
  try {
    return std::thread(body, argument);
  } catch (...) {
    timeline.RemoveEngine(&condition);
    throw;
  }
}

}  // namespace sensorvela::platform

namespace {

using sensorvela::simulated::Timeline;

std::int64_t ClockNs(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

std::int64_t android::elapsedRealtimeNano() {
  const Timeline& timeline = Timeline::Get();
  return timeline.is_virtual() ? timeline.now().count() : ClockNs(CLOCK_BOOTTIME);
}
std::int64_t android::elapsedRealtime() { return elapsedRealtimeNano() / 1'000'000; }

std::int64_t android::uptimeNanos() {
  const Timeline& timeline = Timeline::Get();
  return timeline.is_virtual() ? timeline.monotonic_now().count() : ClockNs(CLOCK_MONOTONIC);
}
std::int64_t android::uptimeMillis() { return uptimeNanos() / 1'000'000; }
