// The device's implementation of platform/sync.h: the standard library, unchanged.
#include "platform/sync.h"

#include <pthread.h>

#include <chrono>
#include <mutex>
#include <thread>

namespace sensorvela::platform {

MonotonicClock::time_point MonotonicClock::now() noexcept {
  return time_point(std::chrono::steady_clock::now().time_since_epoch());
}

// The one failure is a name that is too long, and it would cost only the name.
void NameThisThread(const char* name) { pthread_setname_np(pthread_self(), name); }

void CondVar::WaitUntil(Mutex& mutex, MonotonicClock::time_point deadline) {
  std::unique_lock lock(mutex.mutex_, std::adopt_lock);
  cv_.wait_until(lock, std::chrono::steady_clock::time_point(deadline.time_since_epoch()));
  lock.release();  // Leaves `mutex` locked, as the caller had it.
}

void CondVar::NotifyAll(Mutex& /*mutex*/) { cv_.notify_all(); }

std::thread StartThread(void (*body)(void* argument), void* argument) {
  return std::thread(body, argument);
}

}  // namespace sensorvela::platform
