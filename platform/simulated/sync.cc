// The workstation's implementation of platform/sync.h and of elapsed realtime: the real clocks, or
// virtual time while a `VirtualTime` exists.
#include "platform/sync.h"

#include <pthread.h>
#include <time.h>
#include <utils/SystemClock.h>

#include <chrono>
#include <cstdint>
#include <thread>

#include "platform/simulated/timeline.h"
#include "platform/timespec.h"

using sensorvela::simulated::timeline;

namespace sensorvela::platform {

MonotonicClock::time_point MonotonicClock::now() noexcept {
  if (timeline.is_virtual) return time_point(timeline.monotonic);
  return time_point(std::chrono::steady_clock::now().time_since_epoch());
}

// The one failure is a name that is too long, and it would cost only the name.
void NameThisThread(const char* name) { pthread_setname_np(pthread_self(), name); }

void CondVar::WaitUntil(Mutex& mutex, MonotonicClock::time_point deadline) {
  if (timeline.is_virtual) {
    timeline.Sleep(this, mutex, deadline.time_since_epoch());
    return;
  }
  const timespec at = ToTimespec(deadline.time_since_epoch());
  pthread_cond_clockwait(&condition_, &mutex.mutex_, CLOCK_MONOTONIC, &at);
}

void CondVar::NotifyAll(Mutex& /*mutex*/) {
  if (timeline.is_virtual) {
    timeline.Notify(this);
  } else {
    pthread_cond_broadcast(&condition_);
  }
}

// The thread is busy before it runs. A refused one leaves nothing behind.
std::thread StartThread(void (*body)(void* argument), void* argument) {
  timeline.ThreadBegins();
  try {
    return std::thread([body, argument] {
      body(argument);
      timeline.ThreadEnds();
    });
  } catch (...) {
    timeline.ThreadEnds();
    throw;
  }
}

}  // namespace sensorvela::platform

namespace {

std::int64_t ClockNs(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

std::int64_t android::elapsedRealtimeNano() {
  return timeline.is_virtual ? timeline.elapsed.load().count() : ClockNs(CLOCK_BOOTTIME);
}
std::int64_t android::elapsedRealtime() { return elapsedRealtimeNano() / 1'000'000; }

std::int64_t android::uptimeNanos() {
  return timeline.is_virtual ? timeline.monotonic.load().count() : ClockNs(CLOCK_MONOTONIC);
}
std::int64_t android::uptimeMillis() { return uptimeNanos() / 1'000'000; }
