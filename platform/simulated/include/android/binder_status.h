// The simulated platform's stand-in for the device's binder status header: what the library uses of
// it, and the two makers that a service needs to answer with.
#pragma once

#include <cstdint>

typedef std::int32_t binder_status_t;

enum : binder_status_t {
  STATUS_OK = 0,
  STATUS_FAILED_TRANSACTION = -2147483646,
};

/// The outcome of one call; platform/simulated/binder.cc defines it.
struct AStatus;

extern "C" {

/// True when `status` (not null) reports success.
bool AStatus_isOk(const AStatus* status);

/// Frees `status`. Null is ignored.
void AStatus_delete(AStatus* status);

/// A new status, owned by the caller.
AStatus* AStatus_fromStatus(binder_status_t status);

}  // extern "C"
