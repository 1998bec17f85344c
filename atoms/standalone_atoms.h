// The records of the atoms that only callers outside the library send, and their builders, which
// give the same guarantees as those in sensor_event_atoms.h. A caller builds an atom and
// queues it with `SensorVela::ReportVendorAtomAsync`; it defines what the numbered values mean.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <string>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// The state of the hinge angle changed.
struct HingeAngleStateChanged {
  static constexpr std::int32_t kAtomId = 100106;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
};

/// The usage of a server worker.
struct TarnServerWorkerUsageReported {
  static constexpr std::int32_t kAtomId = 100108;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
};

/// The hinge's Hall sensor triggered.
struct HingeHallSensorTriggered {
  static constexpr std::int32_t kAtomId = 100147;

  std::string reverse_domain_name{};
  bool value_1 = false;
};

/// The distribution of ambient light levels.
struct AlsLuxLevelDistributionReported {
  static constexpr std::int32_t kAtomId = 100250;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
  std::int32_t value_6 = 0;
  std::int32_t value_7 = 0;
  std::int32_t value_8 = 0;
  std::int32_t value_9 = 0;
  std::int32_t value_10 = 0;
  std::int32_t value_11 = 0;
  std::int32_t value_12 = 0;
  std::int32_t value_13 = 0;
  std::int32_t value_14 = 0;
  std::int32_t value_15 = 0;
  std::int32_t value_16 = 0;
};

[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const HingeAngleStateChanged& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const TarnServerWorkerUsageReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const HingeHallSensorTriggered& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const AlsLuxLevelDistributionReported& record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
