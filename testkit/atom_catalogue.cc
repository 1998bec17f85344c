#include "testkit/atom_catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace sensorvela::testkit {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

namespace {

using Tag = VendorAtomValue::Tag;

constexpr Tag kInt = Tag::intValue;
constexpr Tag kLong = Tag::longValue;
constexpr Tag kFloat = Tag::floatValue;
constexpr Tag kBool = Tag::boolValue;
constexpr Tag kInts = Tag::repeatedIntValue;

constexpr ValueInfo kSensorIdHigh = {"sensor_id_high", kInt,
                                     "the sensor identifier's unsigned half, its bits as they are"};
constexpr ValueInfo kSensorIdLow = {"sensor_id_low", kInt, "the sensor identifier's signed half"};

constexpr std::array kSensorHalError = {
    kSensorIdHigh,
    kSensorIdLow,
    ValueInfo{"hal_call", kInt, "the call that failed"},
    ValueInfo{"error_code", kInt, "what the call returned"},
};

constexpr std::array kSensorRuntimeError = {
    kSensorIdHigh,
    kSensorIdLow,
    ValueInfo{"error_type", kInt, "the kind of failure"},
    ValueInfo{"error_code", kInt, "the failure's code"},
};

constexpr std::array kSystemQueueStress = {
    ValueInfo{"queue_type", kInt, "the system queue: 1, 2 or 3"},
    ValueInfo{"value_1", kInt, ""},
    ValueInfo{"value_2", kInt, ""},
    ValueInfo{"value_3", kInt, ""},
    ValueInfo{"value_4", kInt, ""},
    ValueInfo{"value_5", kInt, ""},
    ValueInfo{"value_6", kInt, ""},
};

constexpr std::array kMemoryPressure = {
    ValueInfo{"shared_value", kInt, ""},       ValueInfo{"pressure_value_1", kInt, ""},
    ValueInfo{"pressure_value_2", kInt, ""},   ValueInfo{"pressure_value_3", kInt, ""},
    ValueInfo{"pressure_value_4", kFloat, ""},
};

constexpr std::array kProxStatus = {
    ValueInfo{"int_0", kInt, ""},     ValueInfo{"int_1", kInt, ""},
    ValueInfo{"int_2", kInt, ""},     ValueInfo{"int_3", kInt, ""},
    ValueInfo{"int_4", kInt, ""},     ValueInfo{"int_5", kInt, ""},
    ValueInfo{"int_6", kInt, ""},     ValueInfo{"int_7", kInt, ""},
    ValueInfo{"float_0", kFloat, ""}, ValueInfo{"float_1", kFloat, ""},
    ValueInfo{"float_2", kFloat, ""}, ValueInfo{"float_3", kFloat, ""},
    ValueInfo{"int_8", kInt, ""},     ValueInfo{"int_9", kInt, ""},
    ValueInfo{"float_4", kFloat, ""}, ValueInfo{"float_5", kFloat, ""},
    ValueInfo{"float_6", kFloat, ""},
};

constexpr std::array kHalSensorState = {
    kSensorIdHigh,
    kSensorIdLow,
    ValueInfo{"state", kInt, "1: disabled, 2: enabled"},
    ValueInfo{"sampling_period_ns", kLong, "nanoseconds; -1 when disabled"},
    ValueInfo{"sample_count", kInt, "samples since the last enable; -1 when enabled"},
    ValueInfo{
        "late_sample_count", kInt,
        "of these, samples more than 1.1 sampling periods after the one before, or the enable; "
        "-1 when enabled"},
    ValueInfo{"latency_histogram", kInts,
              "samples by latency: up to 2.5 ms, 5 ms, 10 ms, 20 ms, and more; empty when enabled"},
};

constexpr std::array kSensorHalLatency = {
    kSensorIdHigh,
    kSensorIdLow,
    ValueInfo{"operation", kInt, "the operation that was timed"},
    ValueInfo{"latency_ns", kLong, "nanoseconds that it took"},
};

constexpr std::array kSensorFirmwareState = {
    ValueInfo{"subject_id", kInt, ""},
    ValueInfo{"state", kInt, "the state that the firmware entered"},
    ValueInfo{"detail_code", kInt, ""},
};

constexpr std::array kSensorFirstSample = {
    kSensorIdHigh,
    kSensorIdLow,
    ValueInfo{"first_sample_latency_ns", kLong,
              "nanoseconds from the enable to the first sample's arrival"},
};

constexpr std::array kHingeHallSensor = {ValueInfo{"value_1", kBool, ""}};

constexpr std::array kMemoryServiceability = {
    ValueInfo{"bucket_allocation_total", kInt, "the sum of bucket_allocation_count"},
    ValueInfo{"shared_value", kInt, ""},
    ValueInfo{"serviceability_value_1", kInt, ""},
    ValueInfo{"serviceability_value_2", kInt, ""},
    ValueInfo{"bucket_allocation_count", kInts, "20 bucket counts"},
    ValueInfo{"bucket_duration_ms", kInts, "20 bucket counts"},
};

constexpr std::array kAadProxStats = {
    ValueInfo{"value_1", kInt, ""},    ValueInfo{"value_2", kInt, ""},
    ValueInfo{"value_3", kInt, ""},    ValueInfo{"value_4", kInt, ""},
    ValueInfo{"value_5", kInt, ""},    ValueInfo{"value_6", kInt, ""},
    ValueInfo{"value_7", kInt, ""},    ValueInfo{"value_8", kInt, ""},
    ValueInfo{"value_9", kFloat, ""},  ValueInfo{"value_10", kFloat, ""},
    ValueInfo{"value_11", kFloat, ""}, ValueInfo{"value_12", kFloat, ""},
    ValueInfo{"value_13", kFloat, ""}, ValueInfo{"value_14", kFloat, ""},
    ValueInfo{"value_15", kInt, ""},   ValueInfo{"value_16", kInt, ""},
    ValueInfo{"value_17", kInt, ""},   ValueInfo{"value_18", kInt, ""},
    ValueInfo{"value_19", kInt, ""},   ValueInfo{"value_20", kInt, ""},
};

constexpr std::array kPositionalInts = {
    ValueInfo{"value_1", kInt, ""},  ValueInfo{"value_2", kInt, ""},
    ValueInfo{"value_3", kInt, ""},  ValueInfo{"value_4", kInt, ""},
    ValueInfo{"value_5", kInt, ""},  ValueInfo{"value_6", kInt, ""},
    ValueInfo{"value_7", kInt, ""},  ValueInfo{"value_8", kInt, ""},
    ValueInfo{"value_9", kInt, ""},  ValueInfo{"value_10", kInt, ""},
    ValueInfo{"value_11", kInt, ""}, ValueInfo{"value_12", kInt, ""},
    ValueInfo{"value_13", kInt, ""}, ValueInfo{"value_14", kInt, ""},
    ValueInfo{"value_15", kInt, ""}, ValueInfo{"value_16", kInt, ""},
};

/// `count` int values that are named after their position.
constexpr std::span<const ValueInfo> PositionalInts(std::size_t count) {
  return std::span<const ValueInfo>(kPositionalInts).first(count);
}

constexpr std::array kAtoms = {
    AtomInfo{100024, "SensorHalErrorDetected", kSensorHalError},
    AtomInfo{100025, "SensorRuntimeErrorDetected", kSensorRuntimeError},
    AtomInfo{100028, "SensorProcessorDiagnosticsReported", PositionalInts(4)},
    AtomInfo{100029, "SensorSystemQueueStressReported", kSystemQueueStress},
    AtomInfo{100069, "SensorIpcErrorRateReported", PositionalInts(4)},
    AtomInfo{100070, "SensorMemoryPressureReported", kMemoryPressure},
    AtomInfo{100106, "HingeAngleStateChanged", PositionalInts(2)},
    AtomInfo{100107, "TarnSensorUsageReported", PositionalInts(7)},
    AtomInfo{100108, "TarnServerWorkerUsageReported", PositionalInts(5)},
    AtomInfo{100109, "SensorGatingContextReported", PositionalInts(9)},
    AtomInfo{100110, "SensorCoreDramExceptionsReported", PositionalInts(5)},
    AtomInfo{100133, "ProxStatusReported", kProxStatus},
    AtomInfo{100147, "HingeHallSensorTriggered", kHingeHallSensor},
    AtomInfo{100242, "HalSensorStateChanged", kHalSensorState},
    AtomInfo{100243, "SensorHalLatencyRecorded", kSensorHalLatency},
    AtomInfo{100244, "SensorFirmwareStateChanged", kSensorFirmwareState},
    AtomInfo{100245, "SensorFirstSampleReported", kSensorFirstSample},
    AtomInfo{100250, "AlsLuxLevelDistributionReported", PositionalInts(16)},
    AtomInfo{100304, "SensorMemoryServiceabilityStatsReported", kMemoryServiceability},
    AtomInfo{100334, "AADProxStatsReported", kAadProxStats},
};
static_assert(kAtoms.size() == 20);
static_assert(std::ranges::is_sorted(kAtoms, {}, &AtomInfo::id));

}  // namespace

std::span<const AtomInfo> AtomCatalogue() { return kAtoms; }

const AtomInfo* FindAtom(std::int32_t id) {
  for (const AtomInfo& atom : kAtoms) {
    if (atom.id == id) return &atom;
  }
  return nullptr;
}

std::string AtomName(const VendorAtom& atom) {
  const AtomInfo* info = FindAtom(atom.atomId);
  return info != nullptr ? std::string(info->name) : "atom " + std::to_string(atom.atomId);
}

std::string ValueName(const VendorAtom& atom, std::size_t index) {
  const AtomInfo* info = FindAtom(atom.atomId);
  if (info != nullptr && index < info->values.size()) return std::string(info->values[index].name);
  return "value_" + std::to_string(index + 1);
}

const VendorAtomValue* FindValue(const VendorAtom& atom, std::string_view name) {
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    if (ValueName(atom, i) == name) return &atom.values[i];
  }
  return nullptr;
}

}  // namespace sensorvela::testkit
