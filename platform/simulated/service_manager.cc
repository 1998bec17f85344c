#include "platform/simulated/service_manager.h"

#include <android/binder_manager.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <memory>
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

struct Waiter {
  bool released = false;
  SpAIBinder binder;
};

struct Instance {
  bool declared = false;
  bool refused = false;
  SpAIBinder binder;
  std::list<Waiter*> waiters;
};

/// A binder is released only after the lock, because its service's destructor may call the service
/// manager.
class ServiceManager {
 public:
  // Never destroyed: a reporter thread may look its service up while the process exits.
  static ServiceManager& Get() {
    static ServiceManager& manager = *new ServiceManager;
    return manager;
  }

  void SetDeclared(const std::string& name, bool declared) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    instances_[name].declared = declared;
  }

  void SetRefused(const std::string& name, bool refused) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    instance.refused = refused;
    if (refused) Release(instance, nullptr);
  }

  void Register(const std::string& name, SpAIBinder binder) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    std::swap(instance.binder, binder);
    if (!instance.refused) Release(instance, instance.binder);
  }

  void Unregister(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    SpAIBinder retired;
    const MutexLock lock(mutex_);
    std::swap(instances_[name].binder, retired);
  }

  void ReleaseWaits(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Release(instances_[name], nullptr);
  }

  void Reset() SENSORVELA_EXCLUDES(mutex_) {
    std::vector<SpAIBinder> retired;
    const MutexLock lock(mutex_);
    for (auto& [name, instance] : instances_) {
      instance.declared = false;
      instance.refused = false;
      retired.push_back(std::exchange(instance.binder, nullptr));
      Release(instance, nullptr);
    }
  }

  bool IsDeclared(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return instances_[name].declared;
  }

  SpAIBinder Check(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    const Instance& instance = instances_[name];
    return instance.refused ? nullptr : instance.binder;
  }

  SpAIBinder Wait(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    Waiter waiter;
    waiter.released = instance.refused || instance.binder != nullptr;
    if (!instance.refused) waiter.binder = instance.binder;
    if (!waiter.released) {
      Observe(LookupStep::kWaits);
      instance.waiters.push_back(&waiter);
      Timeline::Get().AddBlocked();
      while (!waiter.released) released_.wait(mutex_);
    }
    Observe(waiter.binder != nullptr ? LookupStep::kFinds : LookupStep::kFindsNone);
    return std::move(waiter.binder);
  }

  void SetObserver(LookupObserver observer) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    observer_ = std::move(observer);
  }

 private:
  void Release(Instance& instance, const SpAIBinder& binder) SENSORVELA_REQUIRES(mutex_) {
    for (Waiter* waiter : instance.waiters) *waiter = {true, binder};
    Timeline::Get().RemoveBlocked(instance.waiters.size());
    instance.waiters.clear();
    released_.notify_all();
  }

  void Observe(LookupStep step) SENSORVELA_REQUIRES(mutex_) {
    if (observer_) observer_(step);
  }

  platform::Mutex mutex_;
  std::condition_variable_any released_;
  std::map<std::string, Instance> instances_ SENSORVELA_GUARDED_BY(mutex_);
  LookupObserver observer_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace

void DeclareService(const std::string& instance) {
  ServiceManager::Get().SetDeclared(instance, true);
}

void UndeclareService(const std::string& instance) {
  ServiceManager::Get().SetDeclared(instance, false);
}

void RefuseService(const std::string& instance) {
  ServiceManager::Get().SetRefused(instance, true);
}

void AllowService(const std::string& instance) {
  ServiceManager::Get().SetRefused(instance, false);
}

void RegisterService(const std::string& instance, std::shared_ptr<IStats> service) {
  SpAIBinder binder = service->asBinder();
  if (binder == nullptr) {
    std::fputs("RegisterService: make the service with ndk::SharedRefBase::make\n", stderr);
    std::abort();
  }
  ServiceManager::Get().Register(instance, std::move(binder));
}

void UnregisterService(const std::string& instance) { ServiceManager::Get().Unregister(instance); }

void ReleaseServiceWaits(const std::string& instance) {
  ServiceManager::Get().ReleaseWaits(instance);
}

void ResetServices() { ServiceManager::Get().Reset(); }

ScopedLookupObserver::ScopedLookupObserver(LookupObserver observer) {
  ServiceManager::Get().SetObserver(std::move(observer));
}

ScopedLookupObserver::~ScopedLookupObserver() { ServiceManager::Get().SetObserver(nullptr); }

}  // namespace sensorvela::simulated

namespace {

/// The binder, with a reference for the caller; null for null.
AIBinder* ForCaller(const ndk::SpAIBinder& binder) {
  AIBinder_incStrong(binder.get());
  return binder.get();
}

}  // namespace

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
  if (binder == nullptr) return EX_ILLEGAL_ARGUMENT;
  AIBinder_incStrong(binder);
  sensorvela::simulated::ServiceManager::Get().Register(instance, ndk::SpAIBinder(binder));
  return EX_NONE;
}

bool AServiceManager_isDeclared(const char* instance) {
  return sensorvela::simulated::ServiceManager::Get().IsDeclared(instance);
}

AIBinder* AServiceManager_checkService(const char* instance) {
  return ForCaller(sensorvela::simulated::ServiceManager::Get().Check(instance));
}

AIBinder* AServiceManager_waitForService(const char* instance) {
  return ForCaller(sensorvela::simulated::ServiceManager::Get().Wait(instance));
}
