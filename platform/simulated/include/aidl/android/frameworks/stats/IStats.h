// The simulated platform's stand-in for the stats service's interface, second version.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::frameworks::stats {

/// A service derives from `BnStats`.
class IStats : public ndk::ICInterface {
 public:
  static const char* descriptor;
  static constexpr std::int32_t version = 2;

  /// The interface object of `binder`; null for a null binder. A binder of another process that
  /// nobody has made an interface of is asked for its own: this waits for the process, and returns
  /// null if it is dead.
  static std::shared_ptr<IStats> fromBinder(const ndk::SpAIBinder& binder);

  IStats();
  ~IStats() override;

  virtual ndk::ScopedAStatus reportVendorAtom(const VendorAtom& in_vendorAtom) = 0;
  virtual ndk::ScopedAStatus getInterfaceVersion(std::int32_t* result) = 0;
  virtual ndk::ScopedAStatus getInterfaceHash(std::string* result) = 0;
};

}  // namespace aidl::android::frameworks::stats
