// The records of the atoms that carry the periodic diagnostics, and their builders, which give the
// same guarantees as those in sensor_event_atoms.h. The supplier defines what the numbered values
// mean.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <string>
#include <vector>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// The state of the sensor processor.
struct SensorProcessorDiagnosticsReported {
  static constexpr std::int32_t kAtomId = 100028;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
};

/// The stress of one of the three system queues.
struct SensorSystemQueueStressReported {
  static constexpr std::int32_t kAtomId = 100029;

  enum class QueueType : std::int32_t { kType1 = 1, kType2 = 2, kType3 = 3 };

  std::string reverse_domain_name{};
  QueueType queue_type{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
  std::int32_t value_6 = 0;
};

/// The error rate of one IPC channel.
struct SensorIpcErrorRateReported {
  static constexpr std::int32_t kAtomId = 100069;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
};

/// A report of memory pressure.
struct SensorMemoryPressureReported {
  static constexpr std::int32_t kAtomId = 100070;

  std::string reverse_domain_name{};
  std::int32_t shared_value = 0;
  std::int32_t pressure_value_1 = 0;
  std::int32_t pressure_value_2 = 0;
  std::int32_t pressure_value_3 = 0;
  float pressure_value_4 = 0;
};

/// The usage of one sensor.
struct TarnSensorUsageReported {
  static constexpr std::int32_t kAtomId = 100107;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
  std::int32_t value_6 = 0;
  std::int32_t value_7 = 0;
};

/// One gating context.
struct SensorGatingContextReported {
  static constexpr std::int32_t kAtomId = 100109;

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
};

/// DRAM exceptions of the sensor core.
struct SensorCoreDramExceptionsReported {
  static constexpr std::int32_t kAtomId = 100110;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
};

/// Statistics of memory serviceability. The engine's atoms have 20 counts in each of the two lists;
/// a host may fill the lists of an atom of its own from the histograms, of 22 bins, that
/// memory_serviceability_histograms.h creates.
struct SensorMemoryServiceabilityStatsReported {
  static constexpr std::int32_t kAtomId = 100304;

  std::string reverse_domain_name{};
  std::int32_t bucket_allocation_total = 0;
  std::int32_t shared_value = 0;
  std::int32_t serviceability_value_1 = 0;
  std::int32_t serviceability_value_2 = 0;
  std::vector<std::int32_t> bucket_allocation_count{};
  std::vector<std::int32_t> bucket_duration_ms{};
};

/// Statistics of the proximity sensor.
struct AADProxStatsReported {
  static constexpr std::int32_t kAtomId = 100334;

  std::string reverse_domain_name{};
  std::int32_t value_1 = 0;
  std::int32_t value_2 = 0;
  std::int32_t value_3 = 0;
  std::int32_t value_4 = 0;
  std::int32_t value_5 = 0;
  std::int32_t value_6 = 0;
  std::int32_t value_7 = 0;
  std::int32_t value_8 = 0;
  float value_9 = 0;
  float value_10 = 0;
  float value_11 = 0;
  float value_12 = 0;
  float value_13 = 0;
  float value_14 = 0;
  std::int32_t value_15 = 0;
  std::int32_t value_16 = 0;
  std::int32_t value_17 = 0;
  std::int32_t value_18 = 0;
  std::int32_t value_19 = 0;
  std::int32_t value_20 = 0;
};

[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorProcessorDiagnosticsReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorSystemQueueStressReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorIpcErrorRateReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorMemoryPressureReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const TarnSensorUsageReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorGatingContextReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorCoreDramExceptionsReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorMemoryServiceabilityStatsReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const AADProxStatsReported& record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
