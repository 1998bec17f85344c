#include "platform/simulated/service_manager.h"

#include <android/binder_manager.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/simulated/timeline.h"
#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {
namespace {

using aidl::android::frameworks::stats::IStats;
using ndk::SpAIBinder;
using platform::MutexLock;

/// What a lookup ends with; empty while it waits.
using Answer = std::optional<SpAIBinder>;

struct Instance {
  bool declared = false;
  bool refused = false;
  SpAIBinder binder;
  std::list<Answer*> waiting;
};

/// A binder is released only after the lock, because its service's destructor may call the service
/// manager.
struct Services {
  /// Ends every lookup that waits for the instance, with `binder`.
  void EndWaits(Instance& instance, const SpAIBinder& binder) SENSORVELA_REQUIRES(mutex) {
    for (Answer* answer : instance.waiting) *answer = binder;
    timeline.AddWaiting(-std::ssize(instance.waiting));
    instance.waiting.clear();
    answered.notify_all();
  }

  void Observe(LookupStep step) const SENSORVELA_REQUIRES(mutex) {
    if (observer) observer(step);
  }

  platform::Mutex mutex;
  std::condition_variable_any answered;
  std::map<std::string, Instance> instances SENSORVELA_GUARDED_BY(mutex);
  LookupObserver observer SENSORVELA_GUARDED_BY(mutex);
};

// Never destroyed: a reporter thread may look its service up while the process exits.
Services& services = *new Services;

/// The binder, with a reference for the caller; null for null.
AIBinder* ForCaller(const SpAIBinder& binder) {
  AIBinder_incStrong(binder.get());
  return binder.get();
}

}  // namespace

void DeclareService(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.instances[instance].declared = true;
}

void UndeclareService(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.instances[instance].declared = false;
}

void RefuseService(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.instances[instance].refused = true;
  services.EndWaits(services.instances[instance], nullptr);
}

void AllowService(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.instances[instance].refused = false;
}

void RegisterService(const std::string& instance, std::shared_ptr<IStats> service) {
  const SpAIBinder binder = service->asBinder();
  if (AServiceManager_addService(binder.get(), instance.c_str()) == EX_NONE) return;
  std::fputs("RegisterService: make the service with ndk::SharedRefBase::make\n", stderr);
  std::abort();
}

void UnregisterService(const std::string& instance) {
  SpAIBinder retired;
  const MutexLock lock(services.mutex);
  std::swap(services.instances[instance].binder, retired);
}

void ReleaseServiceWaits(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.EndWaits(services.instances[instance], nullptr);
}

void AnswerServiceWaits(const std::string& instance, const std::shared_ptr<IStats>& service) {
  const SpAIBinder binder = service->asBinder();
  const MutexLock lock(services.mutex);
  services.EndWaits(services.instances[instance], binder);
}

void ResetServices() {
  std::vector<SpAIBinder> retired;
  const MutexLock lock(services.mutex);
  for (auto& [name, instance] : services.instances) {
    instance.declared = false;
    instance.refused = false;
    retired.push_back(std::exchange(instance.binder, nullptr));
    services.EndWaits(instance, nullptr);
  }
}

ScopedLookupObserver::ScopedLookupObserver(LookupObserver observer) {
  const MutexLock lock(services.mutex);
  services.observer = std::move(observer);
}

ScopedLookupObserver::~ScopedLookupObserver() {
  const MutexLock lock(services.mutex);
  services.observer = nullptr;
}

}  // namespace sensorvela::simulated

using sensorvela::platform::MutexLock;
using sensorvela::simulated::services;

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
  if (binder == nullptr) return EX_ILLEGAL_ARGUMENT;
  AIBinder_incStrong(binder);
  ndk::SpAIBinder changed(binder);
  const MutexLock lock(services.mutex);
  auto& entry = services.instances[instance];
  std::swap(entry.binder, changed);
  if (!entry.refused) services.EndWaits(entry, entry.binder);
  return EX_NONE;
}

bool AServiceManager_isDeclared(const char* instance) {
  const MutexLock lock(services.mutex);
  return services.instances[instance].declared;
}

AIBinder* AServiceManager_checkService(const char* instance) {
  const MutexLock lock(services.mutex);
  const auto& entry = services.instances[instance];
  return entry.refused ? nullptr : sensorvela::simulated::ForCaller(entry.binder);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
  using sensorvela::simulated::LookupStep;
  sensorvela::simulated::Answer answer;
  const MutexLock lock(services.mutex);
  auto& entry = services.instances[instance];
  if (entry.refused || entry.binder != nullptr) {
    answer = entry.refused ? nullptr : entry.binder;
  } else {
    services.Observe(LookupStep::kWaits);
    entry.waiting.push_back(&answer);
    sensorvela::simulated::timeline.AddWaiting(1);
    while (!answer) services.answered.wait(services.mutex);
  }
  services.Observe(*answer != nullptr ? LookupStep::kFinds : LookupStep::kFindsNone);
  return sensorvela::simulated::ForCaller(*answer);
}
