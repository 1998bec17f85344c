// Controls the process's service manager, which answers the library's calls into
// `<android/binder_manager.h>`. An instance is named as the library looks it up. At first every
// instance is undeclared and absent. Every operation may be called from any thread.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <functional>
#include <memory>
#include <string>

#include "service_process.h"

namespace sensorvela::simulated {

// A lookup of an instance that is not registered waits until it is, declared or not, as on the
// device. It ends with none in three cases only: the access is refused when it begins, the service
// manager fails, or the service's process dies or has just died.

/// The device declares the instance. The engine asks for that once, when it starts.
void DeclareService(const std::string& instance);

/// The device no longer declares the instance. Lookups stay the same.
void UndeclareService(const std::string& instance);

/// The process may not look the instance up: later lookups end with none at once, and the instance
/// does not seem to be declared. A lookup that waits goes on waiting, and ends when the instance
/// registers.
void RefuseService(const std::string& instance);

/// The process may look the instance up again.
void AllowService(const std::string& instance);

/// The service manager fails for good: what `ReleaseServiceWaits` does, and every later lookup ends
/// with none at once.
void FailServiceManager(const std::string& instance);

/// Registers `service` (not null, and made with `ndk::SharedRefBase::make`) under the instance, in
/// place of any other, and hands it to the lookups that wait for it. The service manager shares its
/// ownership until it is unregistered. The service is in the host's own process: it is called
/// directly, and its answers are heard. Declares the instance, too: an undeclared one cannot be
/// registered.
void RegisterService(const std::string& instance,
                     std::shared_ptr<aidl::android::frameworks::stats::IStats> service);

/// The same for a service in a process of its own.
void RegisterService(const std::string& instance, std::shared_ptr<ServiceProcess> process);

/// Makes the instance absent. References that lookups have returned stay valid.
void UnregisterService(const std::string& instance);

/// The service manager fails once: every lookup that waits for the instance at this moment, or for
/// the process that is registered, ends with none.
void ReleaseServiceWaits(const std::string& instance);

/// Every lookup that waits for the instance at this moment ends with `service` (not null, and made
/// with `ndk::SharedRefBase::make`), which is not registered.
void AnswerServiceWaits(const std::string& instance,
                        const std::shared_ptr<aidl::android::frameworks::stats::IStats>& service);

/// Back to the beginning: every instance is undeclared, absent and allowed, and every lookup that
/// waits ends with none.
void ResetServices();

/// The steps of a lookup. It waits for the instance, then for the process of the service, if it has
/// to, and then finds the service or finds none.
enum class LookupStep { kWaits, kWaitsForProcess, kFinds, kFindsNone };

/// Receives every step of every lookup. Calls come one at a time, on the thread that makes the
/// lookup. An observer must not call the service manager.
using LookupObserver = std::function<void(LookupStep step)>;

/// Calls `observer` for each step, from construction to destruction. Only one may exist at a time.
class ScopedLookupObserver {
 public:
  explicit ScopedLookupObserver(LookupObserver observer);
  ~ScopedLookupObserver();
  ScopedLookupObserver(const ScopedLookupObserver&) = delete;
  ScopedLookupObserver& operator=(const ScopedLookupObserver&) = delete;
};

}  // namespace sensorvela::simulated
