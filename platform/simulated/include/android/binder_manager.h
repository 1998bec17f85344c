// The simulated platform's stand-in for the device's service manager header. What it answers is set
// through platform/simulated/service_manager.h.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

extern "C" {

/// Registers the binder's service under the instance name, in place of any other.
[[nodiscard]] binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance);

/// True when the device declares a service under this instance name. Does not wait.
bool AServiceManager_isDeclared(const char* instance);

/// The instance's binder, with one strong reference for the caller; null if it is not registered.
[[nodiscard]] AIBinder* AServiceManager_checkService(const char* instance);

/// The same, but waits until the instance registers, whether it is declared or not. Null only when
/// the access is refused or the service manager fails.
[[nodiscard]] AIBinder* AServiceManager_waitForService(const char* instance);

}  // extern "C"
