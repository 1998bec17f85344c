// The threads' primitives and the clock of the C library, in its place. Outside of a run there is
// one thread, and nothing to do.
#include <pthread.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <functional>
#include <limits>

#include "tests/schedules/explorer.h"
#include "tests/schedules/memory.h"
#include "tests/schedules/platform.h"

using sensorvela::schedules::Access;
using sensorvela::schedules::Acquire;
using sensorvela::schedules::CurrentThread;
using sensorvela::schedules::Fail;
using sensorvela::schedules::Platform;
using sensorvela::schedules::Release;
using sensorvela::schedules::Step;

namespace {

/// In the memory of a lock: one more than the number of the thread that holds it.
int& HolderOf(pthread_mutex_t* mutex) { return *reinterpret_cast<int*>(mutex); }

/// In the memory of a condition variable: how often it has been notified.
int& NotificationsOf(pthread_cond_t* condition) { return *reinterpret_cast<int*>(condition); }

void TakeLock(pthread_mutex_t* mutex) {
  Access(mutex, sizeof(int), false);  // For the order before a free.
  HolderOf(mutex) = CurrentThread() + 1;
  Acquire(mutex);
  Platform::Get().TakesLock();
}

void DropLock(pthread_mutex_t* mutex) {
  Access(mutex, sizeof(int), false);
  if (HolderOf(mutex) != CurrentThread() + 1) Fail("a lock is released that is not held");
  HolderOf(mutex) = 0;
  Release(mutex);
  Platform::Get().DropsLock();
}

std::int64_t InNs(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

// NOLINTBEGIN(readability-identifier-naming): the C library's names.
extern "C" {

int pthread_create(pthread_t* newthread, const pthread_attr_t*, void* (*start_routine)(void*),
                   void* arg) noexcept {
  Step({.name = "create"});
  const int thread = sensorvela::schedules::AddThread(start_routine, arg);
  sensorvela::schedules::OrderBeforeThread(thread);
  *newthread = static_cast<pthread_t>(thread);
  return 0;
}

int pthread_join(pthread_t th, void**) {
  const auto join = sensorvela::schedules::JoinOf(static_cast<int>(th));
  Step(join);
  Acquire(join.uses[0].object);
  return 0;
}

int pthread_detach(pthread_t) noexcept { return 0; }

int pthread_setname_np(pthread_t, const char*) noexcept { return 0; }
int pthread_setspecific(pthread_key_t, const void*) noexcept { return 0; }

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  if (CurrentThread() < 0) return 0;
  const auto is_free = [mutex] { return HolderOf(mutex) == 0; };
  Step({.name = "lock", .uses = {{{mutex, true}}}, .ready = is_free});
  TakeLock(mutex);
  return 0;
}

// Only an attempt that succeeds is a step: one that fails has no effect, and the engine repeats it.
int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept { return pthread_mutex_lock(mutex); }

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  if (CurrentThread() < 0) return 0;
  Step({.name = "unlock", .uses = {{{mutex, true}}}});
  DropLock(mutex);
  return 0;
}

int pthread_cond_broadcast(pthread_cond_t* cond) noexcept {
  if (CurrentThread() < 0) return 0;
  Step({.name = "notify", .uses = {{{cond, true}}}});
  Access(cond, sizeof(int), false);
  ++NotificationsOf(cond);
  return 0;
}

int pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex) {
  const timespec never = {.tv_sec = std::numeric_limits<std::int32_t>::max(), .tv_nsec = 0};
  pthread_cond_clockwait(cond, mutex, CLOCK_MONOTONIC, &never);
  return 0;
}

int pthread_cond_clockwait(pthread_cond_t* cond, pthread_mutex_t* mutex, clockid_t,
                           const timespec* abstime) {
  Platform& platform = Platform::Get();
  Step({.name = "wait", .uses = {{{mutex, true}, {cond, true}, {&platform.spurious_wakes, true}}}});
  Access(cond, sizeof(int), false);
  const std::int64_t deadline_ns = InNs(*abstime);
  const int notifications = NotificationsOf(cond);
  const int spurious_wakes = platform.spurious_wakes;
  const auto wakes = [&] {
    return HolderOf(mutex) == 0 &&
           (NotificationsOf(cond) != notifications || platform.spurious_wakes != spurious_wakes ||
            platform.now_ns >= deadline_ns);
  };
  DropLock(mutex);
  ++platform.waiting;
  Step({.name = "wake",
        .uses = {{{mutex, true},
                  {cond, true},
                  {&platform.spurious_wakes, true},
                  {&platform.now_ns, false}}},
        .ready = std::cref(wakes)});
  --platform.waiting;
  TakeLock(mutex);
  return platform.now_ns >= deadline_ns ? ETIMEDOUT : 0;
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t*) noexcept {
  HolderOf(mutex) = 0;
  return 0;
}
int pthread_mutex_destroy(pthread_mutex_t*) noexcept { return 0; }
int pthread_cond_destroy(pthread_cond_t*) noexcept { return 0; }

int clock_gettime(clockid_t, timespec* tp) noexcept {
  const std::int64_t now_ns = Platform::Get().ReadClock();
  *tp = {.tv_sec = now_ns / 1'000'000'000, .tv_nsec = now_ns % 1'000'000'000};
  return 0;
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming)
