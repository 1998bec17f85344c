// The simulated platform's stand-in for the device's binder ownership header.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace ndk {

/// Owns one strong reference to an `AIBinder`, or nothing.
class SpAIBinder {
 public:
  SpAIBinder() = default;
  SpAIBinder(std::nullptr_t) {}
  /// Takes the caller's reference over.
  explicit SpAIBinder(AIBinder* binder) : binder_(binder) {}
  SpAIBinder(const SpAIBinder& other) { *this = other; }
  SpAIBinder(SpAIBinder&& other) noexcept : binder_(std::exchange(other.binder_, nullptr)) {}
  ~SpAIBinder() { set(nullptr); }

  SpAIBinder& operator=(const SpAIBinder& other) {
    AIBinder_incStrong(other.binder_);
    set(other.binder_);
    return *this;
  }
  SpAIBinder& operator=(SpAIBinder&& other) noexcept {
    if (this != &other) set(std::exchange(other.binder_, nullptr));
    return *this;
  }

  /// Takes the caller's reference over and drops the one before.
  void set(AIBinder* binder) {
    AIBinder* const previous = std::exchange(binder_, binder);
    AIBinder_decStrong(previous);
  }

  AIBinder* get() const { return binder_; }
  /// For a function that returns a reference through a pointer; drops the one before.
  AIBinder** getR() {
    set(nullptr);
    return &binder_;
  }

  bool operator==(const SpAIBinder& other) const { return binder_ == other.binder_; }
  bool operator!=(const SpAIBinder& other) const { return binder_ != other.binder_; }
  bool operator<(const SpAIBinder& other) const { return binder_ < other.binder_; }
  bool operator<=(const SpAIBinder& other) const { return binder_ <= other.binder_; }
  bool operator>(const SpAIBinder& other) const { return binder_ > other.binder_; }
  bool operator>=(const SpAIBinder& other) const { return binder_ >= other.binder_; }

 private:
  AIBinder* binder_ = nullptr;
};

/// Owns an `AStatus`, or nothing.
class [[nodiscard]] ScopedAStatus {
 public:
  explicit ScopedAStatus(AStatus* status = nullptr) : status_(status) {}

  static ScopedAStatus ok() { return ScopedAStatus(AStatus_newOk()); }
  static ScopedAStatus fromStatus(binder_status_t status) {
    return ScopedAStatus(AStatus_fromStatus(status));
  }
  static ScopedAStatus fromExceptionCode(binder_exception_t exception) {
    return ScopedAStatus(AStatus_fromExceptionCode(exception));
  }
  static ScopedAStatus fromExceptionCodeWithMessage(binder_exception_t exception,
                                                    const char* message) {
    return ScopedAStatus(AStatus_fromExceptionCodeWithMessage(exception, message));
  }
  static ScopedAStatus fromServiceSpecificError(std::int32_t error) {
    return ScopedAStatus(AStatus_fromServiceSpecificError(error));
  }
  static ScopedAStatus fromServiceSpecificErrorWithMessage(std::int32_t error,
                                                           const char* message) {
    return ScopedAStatus(AStatus_fromServiceSpecificErrorWithMessage(error, message));
  }

  AStatus* get() const { return status_.get(); }
  void set(AStatus* status) { status_.reset(status); }

  /// False when there is no status.
  bool isOk() const { return get() != nullptr && AStatus_isOk(get()); }

  // There must be a status.

  binder_exception_t getExceptionCode() const { return AStatus_getExceptionCode(get()); }
  std::int32_t getServiceSpecificError() const { return AStatus_getServiceSpecificError(get()); }
  binder_status_t getStatus() const { return AStatus_getStatus(get()); }
  const char* getMessage() const { return AStatus_getMessage(get()); }
  std::string getDescription() const {
    const char* const text = AStatus_getDescription(get());
    std::string description = text;
    AStatus_deleteDescription(text);
    return description;
  }

 private:
  struct Delete {
    void operator()(AStatus* status) const { AStatus_delete(status); }
  };
  std::unique_ptr<AStatus, Delete> status_;
};

}  // namespace ndk
