// Tests which lock a `Mutex` asks the system for, and how it waits. The test takes the place of the
// C library's functions and decides what they answer.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <cerrno>

#include "platform/sync.h"
#include "tests/library/call_counts.h"

namespace {

using sensorvela::testing::kCallsAreCounted;

/// What the C library answers the thread that runs the test, and what it was asked.
struct System {
  bool refuses_protocol = false;
  bool refuses_lock = false;
  int policy = SCHED_OTHER;
  /// So many attempts find the lock taken.
  int busy_attempts = 0;

  int protocol = -1;
  int yields = 0;
  int waits = 0;
  int locks_taken = 0;
};

thread_local System* the_system = nullptr;

template <typename Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The Thread sanitizer has functions of its own in their place.
#ifdef __has_feature
#if __has_feature(thread_sanitizer)
#define SENSORVELA_LOCKS_ARE_NOT_REPLACED
#endif
#endif
#ifndef SENSORVELA_LOCKS_ARE_NOT_REPLACED
// NOLINTBEGIN(readability-identifier-naming): the C library's names.
extern "C" {

int pthread_mutexattr_setprotocol(pthread_mutexattr_t* attr, int protocol) noexcept {
  if (the_system != nullptr && the_system->refuses_protocol) return ENOTSUP;
  return Real<int(pthread_mutexattr_t*, int)>("pthread_mutexattr_setprotocol")(attr, protocol);
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  if (the_system != nullptr) {
    int protocol = PTHREAD_PRIO_NONE;
    if (attributes != nullptr) pthread_mutexattr_getprotocol(attributes, &protocol);
    if (the_system->refuses_lock && protocol == PTHREAD_PRIO_INHERIT) return ENOTSUP;
    the_system->protocol = protocol;
  }
  return Real<int(pthread_mutex_t*, const pthread_mutexattr_t*)>("pthread_mutex_init")(mutex,
                                                                                       attributes);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  if (the_system != nullptr && the_system->busy_attempts > 0) {
    --the_system->busy_attempts;
    return EBUSY;
  }
  const int result = Real<int(pthread_mutex_t*)>("pthread_mutex_trylock")(mutex);
  if (the_system != nullptr && result == 0) ++the_system->locks_taken;
  return result;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  const int result = Real<int(pthread_mutex_t*)>("pthread_mutex_lock")(mutex);
  if (the_system != nullptr) {
    ++the_system->waits;
    if (result == 0) ++the_system->locks_taken;
  }
  return result;
}

int sched_getscheduler(pid_t pid) noexcept {
  return the_system != nullptr ? the_system->policy : Real<int(pid_t)>("sched_getscheduler")(pid);
}

int sched_yield() noexcept {
  if (the_system != nullptr) ++the_system->yields;
  return Real<int()>("sched_yield")();
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming)
#endif

namespace {

using sensorvela::platform::Mutex;
using sensorvela::platform::MutexLock;

/// Locks and unlocks a new `Mutex` twice, which asks `system` for everything.
void UseMutex(System& system) {
  the_system = &system;
  Mutex mutex;
  for (int i = 0; i < 2; ++i) {
    const MutexLock lock(mutex);
  }
  the_system = nullptr;
  EXPECT_EQ(system.locks_taken, 2);
}

TEST(MutexTest, InheritsPriorityUnlessTheSystemRefusesThat) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the locks";
  struct {
    const char* what;
    System system;
    int protocol;
  } kCases[] = {{"granted", {}, PTHREAD_PRIO_INHERIT},
                {"the protocol is refused", {.refuses_protocol = true}, PTHREAD_PRIO_NONE},
                {"such a lock is refused", {.refuses_lock = true}, PTHREAD_PRIO_NONE}};
  for (auto& [what, system, protocol] : kCases) {
    UseMutex(system);
    EXPECT_EQ(system.protocol, protocol) << what;
  }
}

TEST(MutexTest, AThreadWithoutRealTimePriorityLetsOthersRunBeforeItWaits) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the locks";
  struct {
    const char* what;
    System system;
    int yields;
    int waits;
  } kCases[] = {{"a free lock", {}, 0, 0},
                {"a lock that is soon free", {.busy_attempts = 3}, 3, 0},
                {"a lock that is not", {.busy_attempts = 4}, 3, 1},
                {"a real-time thread", {.policy = SCHED_FIFO, .busy_attempts = 1}, 0, 1}};
  for (auto& [what, system, yields, waits] : kCases) {
    UseMutex(system);
    EXPECT_EQ(system.yields, yields) << what;
    EXPECT_EQ(system.waits, waits) << what;
  }
}

}  // namespace
