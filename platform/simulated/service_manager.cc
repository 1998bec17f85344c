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

#include "platform/simulated/service_process.h"
#include "platform/simulated/service_proxy.h"
#include "platform/simulated/timeline.h"
#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {
namespace {

using aidl::android::frameworks::stats::IStats;
using ndk::SpAIBinder;
using platform::MutexLock;

/// A service, in this process or in one of its own; neither for none.
struct Service {
  /// The host's binder of it, with a reference for the caller; null for none. Called without the
  /// lock.
  AIBinder* ForCaller() const {
    const SpAIBinder host_binder = process != nullptr ? process->HostBinder() : binder;
    AIBinder_incStrong(host_binder.get());
    return host_binder.get();
  }

  bool is_none() const { return binder == nullptr && process == nullptr; }

  SpAIBinder binder = nullptr;
  std::shared_ptr<ServiceProcess> process = nullptr;
};

/// Who wants to be told when an instance registers.
struct Notification {
  void Tell(const std::string& instance) SENSORVELA_EXCLUDES(mutex);

  platform::Mutex mutex;
  /// Null once it is over.
  AServiceManager_onRegister on_register SENSORVELA_GUARDED_BY(mutex);
  void* cookie SENSORVELA_GUARDED_BY(mutex);
};

/// What a lookup ends with; empty while it waits.
using Answer = std::optional<Service>;

struct Instance {
  /// What a lookup finds now. A service that has died is still found once.
  Service LookUp() {
    if (refused || has_failed) return {};
    if (service.process != nullptr && !service.process->is_alive()) {
      return std::exchange(service, {});
    }
    return service;
  }

  bool declared = false;
  bool refused = false;
  /// The service manager does not answer for it any more.
  bool has_failed = false;
  Service service;
  std::list<Answer*> waiting;
  std::vector<std::shared_ptr<Notification>> notified;
};

/// A binder is released only after the lock, because its service's destructor may call the service
/// manager.
struct Services {
  /// Ends every lookup that waits for the instance, with `service`.
  void EndWaits(Instance& instance, const Service& service) SENSORVELA_REQUIRES(mutex) {
    for (Answer* answer : instance.waiting) *answer = service;
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

/// The calling thread makes a lookup that has got a binder and not yet an interface.
thread_local bool has_lookup_to_end = false;

/// Registers the service, hands it to those who wait for it, and tells who has asked for that.
void Register(const std::string& instance, Service service) {
  std::vector<std::shared_ptr<Notification>> notified;
  {
    const MutexLock lock(services.mutex);
    Instance& entry = services.instances[instance];
    std::swap(entry.service, service);
    services.EndWaits(entry, entry.service);
    notified = entry.notified;
  }
  for (const auto& each : notified) each->Tell(instance);
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
}

void AllowService(const std::string& instance) {
  const MutexLock lock(services.mutex);
  services.instances[instance].refused = false;
}

void FailServiceManager(const std::string& instance) {
  {
    const MutexLock lock(services.mutex);
    services.instances[instance].has_failed = true;
  }
  ReleaseServiceWaits(instance);
}

void RegisterService(const std::string& instance, std::shared_ptr<IStats> service) {
  DeclareService(instance);
  const SpAIBinder binder = service->asBinder();
  if (AServiceManager_addService(binder.get(), instance.c_str()) == EX_NONE) return;
  std::fputs("RegisterService: make the service with ndk::SharedRefBase::make\n", stderr);
  std::abort();
}

void RegisterService(const std::string& instance, std::shared_ptr<ServiceProcess> process) {
  DeclareService(instance);
  Register(instance, {.process = std::move(process)});
}

void UnregisterService(const std::string& instance) {
  Service retired;
  const MutexLock lock(services.mutex);
  std::swap(services.instances[instance].service, retired);
}

void ReleaseServiceWaits(const std::string& instance) {
  std::shared_ptr<ServiceProcess> process;
  {
    const MutexLock lock(services.mutex);
    services.EndWaits(services.instances[instance], {});
    process = services.instances[instance].service.process;
  }
  if (process != nullptr) process->ReleaseLookups();
}

void AnswerServiceWaits(const std::string& instance, const std::shared_ptr<IStats>& service) {
  const Service answer = {.binder = service->asBinder()};
  const MutexLock lock(services.mutex);
  services.EndWaits(services.instances[instance], answer);
}

void ResetServices() {
  std::vector<Service> retired;
  {
    const MutexLock lock(services.mutex);
    for (auto& [name, instance] : services.instances) {
      instance.declared = false;
      instance.refused = false;
      instance.has_failed = false;
      retired.push_back(std::exchange(instance.service, {}));
      services.EndWaits(instance, {});
    }
  }
  for (const Service& service : retired) {
    if (service.process != nullptr) service.process->ReleaseLookups();
  }
}

bool FindInterface(ServiceProxy& proxy) {
  // A caller that has the reference already does not ask for it again.
  if (!proxy.knows_interface()) {
    const auto observe_wait = [] {
      const MutexLock lock(services.mutex);
      if (has_lookup_to_end) services.Observe(LookupStep::kWaitsForProcess);
    };
    if (proxy.process().AwaitAnswer(observe_wait)) proxy.KnowInterface();
  }
  if (std::exchange(has_lookup_to_end, false)) {
    const MutexLock lock(services.mutex);
    services.Observe(proxy.knows_interface() ? LookupStep::kFinds : LookupStep::kFindsNone);
  }
  return proxy.knows_interface();
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
using sensorvela::simulated::LookupStep;
using sensorvela::simulated::services;

struct AServiceManager_NotificationRegistration {
  std::string instance;
  std::shared_ptr<sensorvela::simulated::Notification> notification;
};

void sensorvela::simulated::Notification::Tell(const std::string& instance) {
  const MutexLock lock(mutex);
  const SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
  if (on_register != nullptr && binder != nullptr) {
    on_register(instance.c_str(), binder.get(), cookie);
  }
}

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
  if (binder == nullptr) return EX_ILLEGAL_ARGUMENT;
  {
    const MutexLock lock(services.mutex);
    if (!services.instances[instance].declared) return EX_ILLEGAL_ARGUMENT;
  }
  AIBinder_incStrong(binder);
  sensorvela::simulated::Register(instance, {.binder = ndk::SpAIBinder(binder)});
  return EX_NONE;
}

bool AServiceManager_isDeclared(const char* instance) {
  const MutexLock lock(services.mutex);
  const auto& entry = services.instances[instance];
  return entry.declared && !entry.refused && !entry.has_failed;
}

AIBinder* AServiceManager_checkService(const char* instance) {
  sensorvela::simulated::Service found;
  {
    const MutexLock lock(services.mutex);
    found = services.instances[instance].LookUp();
  }
  return found.ForCaller();
}

AIBinder* AServiceManager_getService(const char* instance) {
  return AServiceManager_checkService(instance);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
  sensorvela::simulated::Answer answer;
  {
    const MutexLock lock(services.mutex);
    auto& entry = services.instances[instance];
    sensorvela::simulated::Service found = entry.LookUp();
    if (!found.is_none() || entry.refused || entry.has_failed) {
      answer = std::move(found);
    } else {
      services.Observe(LookupStep::kWaits);
      entry.waiting.push_back(&answer);
      sensorvela::simulated::timeline.AddWaiting(1);
      while (!answer) services.answered.wait(services.mutex);
    }
    sensorvela::simulated::has_lookup_to_end = answer->process != nullptr;
    if (answer->process == nullptr) {
      services.Observe(answer->is_none() ? LookupStep::kFindsNone : LookupStep::kFinds);
    }
  }
  return answer->ForCaller();
}

AServiceManager_NotificationRegistration* AServiceManager_registerForServiceNotifications(
    const char* instance, AServiceManager_onRegister on_register, void* cookie) {
  auto notification = std::make_shared<sensorvela::simulated::Notification>();
  {
    const MutexLock lock(notification->mutex);
    notification->on_register = on_register;
    notification->cookie = cookie;
  }
  {
    const MutexLock lock(services.mutex);
    services.instances[instance].notified.push_back(notification);
  }
  notification->Tell(instance);
  return new AServiceManager_NotificationRegistration{instance, std::move(notification)};
}

void AServiceManager_NotificationRegistration_delete(
    AServiceManager_NotificationRegistration* registration) {
  const std::unique_ptr<AServiceManager_NotificationRegistration> retired(registration);
  if (retired == nullptr) return;
  {
    const MutexLock lock(services.mutex);
    std::erase(services.instances[retired->instance].notified, retired->notification);
  }
  const MutexLock lock(retired->notification->mutex);
  retired->notification->on_register = nullptr;
}
