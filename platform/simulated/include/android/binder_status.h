// The simulated platform's stand-in for the device's binder status header.
#pragma once

#include <cerrno>
#include <cstdint>

typedef std::int32_t binder_status_t;

enum : binder_status_t {
  STATUS_OK = 0,
  STATUS_UNKNOWN_ERROR = -2147483647 - 1,
  STATUS_BAD_TYPE = STATUS_UNKNOWN_ERROR + 1,
  STATUS_FAILED_TRANSACTION = STATUS_UNKNOWN_ERROR + 2,
  STATUS_NO_MEMORY = -ENOMEM,
  STATUS_INVALID_OPERATION = -ENOSYS,
  STATUS_BAD_VALUE = -EINVAL,
  STATUS_NAME_NOT_FOUND = -ENOENT,
  STATUS_PERMISSION_DENIED = -EPERM,
  STATUS_NO_INIT = -ENODEV,
  STATUS_ALREADY_EXISTS = -EEXIST,
  STATUS_DEAD_OBJECT = -EPIPE,
  STATUS_BAD_INDEX = -EOVERFLOW,
  STATUS_NOT_ENOUGH_DATA = -ENODATA,
  STATUS_WOULD_BLOCK = -EWOULDBLOCK,
  STATUS_TIMED_OUT = -ETIMEDOUT,
  STATUS_UNKNOWN_TRANSACTION = -EBADMSG,
  STATUS_FDS_NOT_ALLOWED = STATUS_UNKNOWN_ERROR + 7,
  STATUS_UNEXPECTED_NULL = STATUS_UNKNOWN_ERROR + 8,
};

typedef std::int32_t binder_exception_t;

enum : binder_exception_t {
  EX_NONE = 0,
  EX_SECURITY = -1,
  EX_BAD_PARCELABLE = -2,
  EX_ILLEGAL_ARGUMENT = -3,
  EX_NULL_POINTER = -4,
  EX_ILLEGAL_STATE = -5,
  EX_NETWORK_MAIN_THREAD = -6,
  EX_UNSUPPORTED_OPERATION = -7,
  EX_SERVICE_SPECIFIC = -8,
  EX_PARCELABLE = -9,
  EX_TRANSACTION_FAILED = -129,
};

/// The outcome of one call; platform/simulated/binder.cc defines it.
struct AStatus;

extern "C" {

// New statuses, owned by the caller. Texts are copied. A status that is none of those above becomes
// `STATUS_UNKNOWN_ERROR`, such an exception `EX_TRANSACTION_FAILED`.

[[nodiscard]] AStatus* AStatus_newOk();
[[nodiscard]] AStatus* AStatus_fromStatus(binder_status_t status);
[[nodiscard]] AStatus* AStatus_fromExceptionCode(binder_exception_t exception);
[[nodiscard]] AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception,
                                                            const char* message);
[[nodiscard]] AStatus* AStatus_fromServiceSpecificError(std::int32_t error);
[[nodiscard]] AStatus* AStatus_fromServiceSpecificErrorWithMessage(std::int32_t error,
                                                                   const char* message);

// `status` is not null.

/// True when `status` reports success.
bool AStatus_isOk(const AStatus* status);
binder_exception_t AStatus_getExceptionCode(const AStatus* status);
/// 0 unless the exception is `EX_SERVICE_SPECIFIC`.
std::int32_t AStatus_getServiceSpecificError(const AStatus* status);
/// `STATUS_OK` unless the transaction failed.
binder_status_t AStatus_getStatus(const AStatus* status);
/// Good for as long as `status`.
const char* AStatus_getMessage(const AStatus* status);
/// A text for a log; the caller frees it with `AStatus_deleteDescription`.
const char* AStatus_getDescription(const AStatus* status);
void AStatus_deleteDescription(const char* description);

/// Frees `status`. Null is ignored.
void AStatus_delete(AStatus* status);

}  // extern "C"
