// The records of the atoms that the engine's event methods send, and their builders.
//
// A record's `kAtomId` is the atom's identifier. The members after `reverse_domain_name` become the
// atom's values, in the order of their declaration; a member's type determines the kind of its
// value. `createVendorAtom` checks nothing, uses no shared state and may run on any thread with any
// lock held. It allocates the list of values once, at its exact size, and each repeated value once.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <string>
#include <vector>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// A call into the sensors HAL failed.
struct SensorHalErrorDetected {
  static constexpr std::int32_t kAtomId = 100024;

  /// The call that failed. The host assigns the numbers.
  enum class HalCall : std::int32_t {};

  std::string reverse_domain_name{};
  std::int32_t sensor_id_high = 0;
  std::int32_t sensor_id_low = 0;
  HalCall hal_call{};
  std::int32_t error_code = 0;
};

/// A sensor failed while it ran.
struct SensorRuntimeErrorDetected {
  static constexpr std::int32_t kAtomId = 100025;

  /// The kind of failure. The host assigns the numbers.
  enum class ErrorType : std::int32_t {};

  std::string reverse_domain_name{};
  std::int32_t sensor_id_high = 0;
  std::int32_t sensor_id_low = 0;
  ErrorType error_type{};
  std::int32_t error_code = 0;
};

/// A proximity status report. Its producer defines what the values mean.
struct ProxStatusReported {
  static constexpr std::int32_t kAtomId = 100133;

  std::string reverse_domain_name{};
  std::int32_t int_0 = 0;
  std::int32_t int_1 = 0;
  std::int32_t int_2 = 0;
  std::int32_t int_3 = 0;
  std::int32_t int_4 = 0;
  std::int32_t int_5 = 0;
  std::int32_t int_6 = 0;
  std::int32_t int_7 = 0;
  float float_0 = 0;
  float float_1 = 0;
  float float_2 = 0;
  float float_3 = 0;
  std::int32_t int_8 = 0;
  std::int32_t int_9 = 0;
  float float_4 = 0;
  float float_5 = 0;
  float float_6 = 0;
};

/// A sensor was enabled or disabled. A member that does not apply to the state is -1 or empty.
struct HalSensorStateChanged {
  static constexpr std::int32_t kAtomId = 100242;

  std::string reverse_domain_name{};
  std::int32_t sensor_id_high = 0;
  std::int32_t sensor_id_low = 0;
  /// 1: disabled, 2: enabled.
  std::int32_t state = 0;
  std::int64_t sampling_period_ns = 0;
  std::int32_t sample_count = 0;
  std::int32_t late_sample_count = 0;
  std::vector<std::int32_t> latency_histogram{};
};

/// An operation of the sensors HAL was timed.
struct SensorHalLatencyRecorded {
  static constexpr std::int32_t kAtomId = 100243;

  /// The timed operation. The host assigns the numbers.
  enum class Operation : std::int32_t {};

  std::string reverse_domain_name{};
  std::int32_t sensor_id_high = 0;
  std::int32_t sensor_id_low = 0;
  Operation operation{};
  std::int64_t latency_ns = 0;
};

/// A sensor firmware changed its state.
struct SensorFirmwareStateChanged {
  static constexpr std::int32_t kAtomId = 100244;

  /// The new state. The host assigns the numbers.
  enum class State : std::int32_t {};

  std::string reverse_domain_name{};
  std::int32_t subject_id = 0;
  State state{};
  std::int32_t detail_code = 0;
};

/// A sensor delivered its first sample after an enable.
struct SensorFirstSampleReported {
  static constexpr std::int32_t kAtomId = 100245;

  std::string reverse_domain_name{};
  std::int32_t sensor_id_high = 0;
  std::int32_t sensor_id_low = 0;
  /// From the enable to the first sample's arrival.
  std::int64_t first_sample_latency_ns = 0;
};

[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorHalErrorDetected& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorRuntimeErrorDetected& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const ProxStatusReported& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const HalSensorStateChanged& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorHalLatencyRecorded& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorFirmwareStateChanged& record);
[[gnu::visibility("default")]] aidl::android::frameworks::stats::VendorAtom createVendorAtom(
    const SensorFirstSampleReported& record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
