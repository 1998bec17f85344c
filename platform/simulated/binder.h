// Binder objects of the simulated platform. Internal to it.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>
#include <android/binder_ibinder.h>

#include <memory>

namespace sensorvela::simulated {

/// A new binder for `service` with one strong reference for the caller; null for null.
AIBinder* NewBinder(std::shared_ptr<aidl::android::frameworks::stats::IStats> service);

}  // namespace sensorvela::simulated
