#include "engine/stats_service.h"

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <android/log.h>

#include <memory>
#include <string>

#include "engine/log_lines.h"
#include "engine/log_tag.h"
#include "engine/sensor_vela.h"

namespace sensorvela {

using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;

std::shared_ptr<IStats> LookUpStatsService(const std::string& instance) {
  return IStats::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(instance.c_str())));
}

bool ReportAtom(IStats& service, const VendorAtom& atom) {
  const ndk::ScopedAStatus status = service.reportVendorAtom(atom);
  return status.get() != nullptr && AStatus_isOk(status.get());
}

}  // namespace sensorvela

void SensorVela::WaitForStatsService() const {
  if (!AServiceManager_isDeclared(stats_service_name_.c_str())) {
    __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag,
                        sensorvela::kServiceNotRegisteredLine);
    return;
  }
  __android_log_print(ANDROID_LOG_INFO, sensorvela::kLogTag, sensorvela::kWaitingForServiceLine);
  const auto service = sensorvela::LookUpStatsService(stats_service_name_);
  if (service != nullptr) {
    __android_log_print(ANDROID_LOG_INFO, sensorvela::kLogTag, sensorvela::kServiceOnlineLine);
  } else {
    __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag, sensorvela::kNoServiceLine);
  }
}
