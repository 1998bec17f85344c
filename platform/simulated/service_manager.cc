#include "platform/simulated/service_manager.h"

#include <android/binder_manager.h>

#include <condition_variable>
#include <list>
#include <map>
#include <utility>
#include <vector>

#include "platform/simulated/binder.h"
#include "platform/simulated/timeline.h"
#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {
namespace {

using aidl::android::frameworks::stats::IStats;
using platform::MutexLock;

struct Waiter {
  bool released = false;
  std::shared_ptr<IStats> service;
};

struct Instance {
  bool declared = false;
  std::shared_ptr<IStats> service;
  std::list<Waiter*> waiters;
};

/// A service that goes away is destroyed after the lock has been released: it may call back.
class ServiceManager {
 public:
  // Never destroyed: a reporter thread may look its service up while the process exits.
  static ServiceManager& Get() {
    static ServiceManager& manager = *new ServiceManager;
    return manager;
  }

  void SetDeclared(const std::string& name, bool declared) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    instance.declared = declared;
    if (!declared) Release(instance);
  }

  void Register(const std::string& name, std::shared_ptr<IStats> service)
      SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    instance.service.swap(service);
    Release(instance);
  }

  void Unregister(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    std::shared_ptr<IStats> retired;
    const MutexLock lock(mutex_);
    instances_[name].service.swap(retired);
  }

  void ReleaseWaits(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Release(instances_[name]);
  }

  void Reset() SENSORVELA_EXCLUDES(mutex_) {
    std::vector<std::shared_ptr<IStats>> retired;
    const MutexLock lock(mutex_);
    for (auto& [name, instance] : instances_) {
      instance.declared = false;
      retired.push_back(std::exchange(instance.service, nullptr));
      Release(instance);
    }
  }

  bool IsDeclared(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return instances_[name].declared;
  }

  std::shared_ptr<IStats> Wait(const std::string& name) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    Instance& instance = instances_[name];
    Waiter waiter = {instance.service != nullptr || !instance.declared, instance.service};
    if (!waiter.released) {
      Observe(LookupStep::kWaits);
      instance.waiters.push_back(&waiter);
      Timeline::Get().AddBlocked();
      while (!waiter.released) released_.wait(mutex_);
    }
    Observe(waiter.service != nullptr ? LookupStep::kFinds : LookupStep::kFindsNone);
    return std::move(waiter.service);
  }

  void SetObserver(LookupObserver observer) SENSORVELA_EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    observer_ = std::move(observer);
  }

 private:
  void Release(Instance& instance) SENSORVELA_REQUIRES(mutex_) {
    for (Waiter* waiter : instance.waiters) *waiter = {true, instance.service};
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

void RegisterService(const std::string& instance, std::shared_ptr<IStats> service) {
  ServiceManager::Get().Register(instance, std::move(service));
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

bool AServiceManager_isDeclared(const char* instance) {
  return sensorvela::simulated::ServiceManager::Get().IsDeclared(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
  return sensorvela::simulated::NewBinder(
      sensorvela::simulated::ServiceManager::Get().Wait(instance));
}
