// The simulated platform's stand-in for what a stats service derives from. The service is made with
// `ndk::SharedRefBase::make` and registered through platform/simulated/service_manager.h.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <cstdint>
#include <string>

namespace aidl::android::frameworks::stats {

class BnStats : public ndk::BnCInterface<IStats> {
 public:
  BnStats();
  ~BnStats() override;

  ndk::ScopedAStatus getInterfaceVersion(std::int32_t* result) final;
  ndk::ScopedAStatus getInterfaceHash(std::string* result) final;

 protected:
  ndk::SpAIBinder createBinder() override;
};

}  // namespace aidl::android::frameworks::stats
