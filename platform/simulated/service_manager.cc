#include "platform/simulated/service_manager.h"

#include <android/binder_manager.h>

#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/simulated/binder.h"
#include "platform/simulated/timeline.h"

namespace sensorvela::simulated {
namespace {

using aidl::android::frameworks::stats::IStats;

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

  /// Applies `change` to the instance under the lock.
  template <typename Change>
  void Update(const std::string& name, Change change) {
    const std::lock_guard lock(mutex_);
    change(instances_[name]);
  }

  void Release(Instance& instance) {
    for (Waiter* waiter : instance.waiters) *waiter = {true, instance.service};
    Timeline::Get().RemoveBlocked(instance.waiters.size());
    instance.waiters.clear();
    released_.notify_all();
  }

  void Reset() {
    std::vector<std::shared_ptr<IStats>> retired;
    const std::lock_guard lock(mutex_);
    for (auto& [name, instance] : instances_) {
      instance.declared = false;
      retired.push_back(std::exchange(instance.service, nullptr));
      Release(instance);
    }
  }

  bool IsDeclared(const std::string& name) {
    const std::lock_guard lock(mutex_);
    return instances_[name].declared;
  }

  std::shared_ptr<IStats> Wait(const std::string& name) {
    std::unique_lock lock(mutex_);
    Instance& instance = instances_[name];
    Waiter waiter = {instance.service != nullptr || !instance.declared, instance.service};
    if (!waiter.released) {
      Observe(LookupStep::kWaits);
      instance.waiters.push_back(&waiter);
      Timeline::Get().AddBlocked();
      released_.wait(lock, [&] { return waiter.released; });
    }
    Observe(waiter.service != nullptr ? LookupStep::kFinds : LookupStep::kFindsNone);
    return std::move(waiter.service);
  }

  void SetObserver(LookupObserver observer) {
    const std::lock_guard lock(mutex_);
    observer_ = std::move(observer);
  }

 private:
  void Observe(LookupStep step) {
    if (observer_) observer_(step);
  }

  std::mutex mutex_;
  std::condition_variable released_;
  std::map<std::string, Instance> instances_;
  LookupObserver observer_;
};

}  // namespace

void DeclareService(const std::string& instance) {
  ServiceManager::Get().Update(instance, [](Instance& found) { found.declared = true; });
}

void UndeclareService(const std::string& instance) {
  ServiceManager::Get().Update(instance, [](Instance& found) {
    found.declared = false;
    ServiceManager::Get().Release(found);
  });
}

void RegisterService(const std::string& instance, std::shared_ptr<IStats> service) {
  ServiceManager::Get().Update(instance, [&](Instance& found) {
    found.service.swap(service);
    ServiceManager::Get().Release(found);
  });
}

void UnregisterService(const std::string& instance) {
  std::shared_ptr<IStats> retired;
  ServiceManager::Get().Update(instance, [&](Instance& found) { found.service.swap(retired); });
}

void ReleaseServiceWaits(const std::string& instance) {
  ServiceManager::Get().Update(instance,
                               [](Instance& found) { ServiceManager::Get().Release(found); });
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
