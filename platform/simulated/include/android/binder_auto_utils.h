// The simulated platform's stand-in for the device's binder ownership header.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_status.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
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
  /// As on the device, a move is a copy.
  SpAIBinder(const SpAIBinder& other) { *this = other; }
  ~SpAIBinder() { set(nullptr); }

  SpAIBinder& operator=(const SpAIBinder& other) {
    AIBinder_incStrong(other.binder_);
    set(other.binder_);
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

  bool operator==(const AIBinder* other) const { return binder_ == other; }
  bool operator!=(const AIBinder* other) const { return binder_ != other; }
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
class ScopedAStatus {
 public:
  explicit ScopedAStatus(AStatus* status = nullptr) : status_(status) {}
  ScopedAStatus(ScopedAStatus&& other) noexcept : status_(other.release()) {}
  ScopedAStatus& operator=(ScopedAStatus&& other) noexcept {
    set(other.release());
    return *this;
  }
  ScopedAStatus(const ScopedAStatus&) = delete;
  ScopedAStatus& operator=(const ScopedAStatus&) = delete;
  ~ScopedAStatus() { set(nullptr); }

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

  AStatus* get() const { return status_; }
  void set(AStatus* status) { AStatus_delete(std::exchange(status_, status)); }
  /// Hands the status over to the caller.
  AStatus* release() { return std::exchange(status_, nullptr); }
  /// For a function that returns a status through a pointer; frees the one before.
  AStatus** getR() {
    set(nullptr);
    return &status_;
  }

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
  AStatus* status_;
};

/// Writes the status's description.
inline std::ostream& operator<<(std::ostream& out, const ScopedAStatus& status) {
  return out << status.getDescription();
}

/// Owns a death recipient, or nothing.
class ScopedAIBinder_DeathRecipient {
 public:
  explicit ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient* recipient = nullptr)
      : recipient_(recipient) {}

  AIBinder_DeathRecipient* get() const { return recipient_.get(); }
  void set(AIBinder_DeathRecipient* recipient) { recipient_.reset(recipient); }

 private:
  struct Delete {
    void operator()(AIBinder_DeathRecipient* recipient) const {
      AIBinder_DeathRecipient_delete(recipient);
    }
  };
  std::unique_ptr<AIBinder_DeathRecipient, Delete> recipient_;
};

}  // namespace ndk
