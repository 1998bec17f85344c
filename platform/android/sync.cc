// The device's implementation of platform/sync.h: the C library's threads and clock.
#include "platform/sync.h"

#include <pthread.h>
#include <time.h>

#include <chrono>
#include <thread>

#include "platform/timespec.h"

namespace sensorvela::platform {

MonotonicClock::time_point MonotonicClock::now() noexcept {
  return time_point(std::chrono::steady_clock::now().time_since_epoch());
}

// The one failure is a name that is too long, and it would cost only the name.
void NameThisThread(const char* name) { pthread_setname_np(pthread_self(), name); }

void CondVar::WaitUntil(Mutex& mutex, MonotonicClock::time_point deadline) {
  const timespec at = ToTimespec(deadline.time_since_epoch());
  pthread_cond_clockwait(&condition_, &mutex.mutex_, CLOCK_MONOTONIC, &at);
}

void CondVar::NotifyAll(Mutex& /*mutex*/) { pthread_cond_broadcast(&condition_); }

std::thread StartThread(void (*body)(void* argument), void* argument) {
  return std::thread(body, argument);
}

}  // namespace sensorvela::platform
