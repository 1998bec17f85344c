#include "platform/simulated/binder.h"

#include <android/binder_status.h>

#include <utility>

using aidl::android::frameworks::stats::IStats;

// Each lookup makes its own binder, so one strong reference is all there ever is.
struct AIBinder {
  std::shared_ptr<IStats> service;
};

struct AStatus {
  binder_status_t status;
};

void AIBinder_decStrong(AIBinder* binder) { delete binder; }

bool AStatus_isOk(const AStatus* status) { return status->status == STATUS_OK; }
void AStatus_delete(AStatus* status) { delete status; }
AStatus* AStatus_fromStatus(binder_status_t status) { return new AStatus{status}; }

namespace aidl::android::frameworks::stats {

const char* const IStats::descriptor = "android.frameworks.stats.IStats";

IStats::~IStats() = default;

std::shared_ptr<IStats> IStats::fromBinder(const ndk::SpAIBinder& binder) {
  return binder.get() == nullptr ? nullptr : binder.get()->service;
}

}  // namespace aidl::android::frameworks::stats

namespace sensorvela::simulated {

AIBinder* NewBinder(std::shared_ptr<IStats> service) {
  return service == nullptr ? nullptr : new AIBinder{std::move(service)};
}

}  // namespace sensorvela::simulated
