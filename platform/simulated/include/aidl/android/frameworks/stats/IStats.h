// The simulated platform's stand-in for the stats service's interface: what the library uses of it.
// A service derives from it and is registered through platform/simulated/service_manager.h.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>
#include <android/binder_auto_utils.h>

#include <memory>

namespace aidl::android::frameworks::stats {

class IStats {
 public:
  static const char* const descriptor;

  /// The interface object of `binder`; null for a null binder.
  static std::shared_ptr<IStats> fromBinder(const ndk::SpAIBinder& binder);

  IStats() = default;
  IStats(const IStats&) = delete;
  IStats& operator=(const IStats&) = delete;
  virtual ~IStats();

  virtual ndk::ScopedAStatus reportVendorAtom(const VendorAtom& in_vendorAtom) = 0;
};

}  // namespace aidl::android::frameworks::stats
