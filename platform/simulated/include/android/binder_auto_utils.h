// The simulated platform's stand-in for the device's binder ownership header: what the library uses
// of it.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <memory>

namespace ndk {

/// Owns one strong reference to an `AIBinder`, or nothing.
class SpAIBinder {
 public:
  SpAIBinder() = default;
  explicit SpAIBinder(AIBinder* binder) : binder_(binder) {}

  AIBinder* get() const { return binder_.get(); }

 private:
  struct DecStrong {
    void operator()(AIBinder* binder) const { AIBinder_decStrong(binder); }
  };
  std::unique_ptr<AIBinder, DecStrong> binder_;
};

/// Owns an `AStatus`, or nothing.
class ScopedAStatus {
 public:
  explicit ScopedAStatus(AStatus* status = nullptr) : status_(status) {}

  static ScopedAStatus ok() { return fromStatus(STATUS_OK); }
  static ScopedAStatus fromStatus(binder_status_t status) {
    return ScopedAStatus(AStatus_fromStatus(status));
  }

  AStatus* get() const { return status_.get(); }

  /// Must hold a status.
  bool isOk() const { return AStatus_isOk(status_.get()); }

 private:
  struct Delete {
    void operator()(AStatus* status) const { AStatus_delete(status); }
  };
  std::unique_ptr<AStatus, Delete> status_;
};

}  // namespace ndk
