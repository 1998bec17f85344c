// The simulated platform's stand-in for the device's service manager header. What it answers is set
// through platform/simulated/service_manager.h.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

extern "C" {

/// Registers the binder's service under the instance name, in place of any other. A name that the
/// device does not declare is refused: `EX_ILLEGAL_ARGUMENT`.
[[nodiscard]] binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance);

/// True when the device declares a service under this instance name and the process may look it
/// up. Does not wait.
bool AServiceManager_isDeclared(const char* instance);

/// The instance's binder, with one strong reference for the caller; null if it is not registered.
[[nodiscard]] AIBinder* AServiceManager_checkService(const char* instance);

/// The same. On a device it waits for up to five seconds, and is deprecated.
[[nodiscard]] AIBinder* AServiceManager_getService(const char* instance);

/// The same, but waits until the instance registers, whether it is declared or not. Null only when
/// the access is refused or the service manager fails.
[[nodiscard]] AIBinder* AServiceManager_waitForService(const char* instance);

typedef void (*AServiceManager_onRegister)(const char* instance, AIBinder* registered,
                                           void* cookie);

struct AServiceManager_NotificationRegistration;

/// Calls `on_register` at once if the instance is registered, and then each time it registers, on
/// the thread that registers it.
[[nodiscard]] AServiceManager_NotificationRegistration*
AServiceManager_registerForServiceNotifications(const char* instance,
                                                AServiceManager_onRegister on_register,
                                                void* cookie);

/// `on_register` is not called any more when this returns. Must not be called by it.
void AServiceManager_NotificationRegistration_delete(
    AServiceManager_NotificationRegistration* registration);

}  // extern "C"
