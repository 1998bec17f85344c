// The simulated platform's stand-in for the device's header of the process's own binder threads.
// Here no call comes from another process, so there are none.
#pragma once

#include <cstdint>

extern "C" {

/// On a device: starts a thread that takes calls and notices registrations at once.
void ABinderProcess_startThreadPool();

bool ABinderProcess_setThreadPoolMaxThreadCount(std::uint32_t num_threads);

/// Does not return, as on a device.
void ABinderProcess_joinThreadPool();

}  // extern "C"
