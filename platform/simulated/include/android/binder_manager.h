// The simulated platform's stand-in for the device's service manager header: what the library uses
// of it. What it answers is set through platform/simulated/service_manager.h.
#pragma once

#include <android/binder_ibinder.h>

extern "C" {

/// True when the device declares a service under this instance name. Does not wait.
bool AServiceManager_isDeclared(const char* instance);

/// The instance's binder, with one strong reference for the caller. Waits while a declared instance
/// is absent; null for an instance that is neither declared nor registered, or when the wait is
/// released with none.
AIBinder* AServiceManager_waitForService(const char* instance);

}  // extern "C"
