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

  /// The interface object of `binder`; null for a null binder.
  static std::shared_ptr<IStats> fromBinder(const ndk::SpAIBinder& binder);

  IStats();
  ~IStats() override;

  virtual ndk::ScopedAStatus reportVendorAtom(const VendorAtom& in_vendorAtom) = 0;
  virtual ndk::ScopedAStatus getInterfaceVersion(std::int32_t* result) = 0;
  virtual ndk::ScopedAStatus getInterfaceHash(std::string* result) = 0;
};

}  // namespace aidl::android::frameworks::stats
