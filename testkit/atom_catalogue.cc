#include "testkit/atom_catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "atoms/all_records.h"
#include "trace_format/record_fields.h"

namespace sensorvela::testkit {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
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

constexpr std::array kPositionalInts = {
    ValueInfo{"value_1", kInt, ""},  ValueInfo{"value_2", kInt, ""},
    ValueInfo{"value_3", kInt, ""},  ValueInfo{"value_4", kInt, ""},
    ValueInfo{"value_5", kInt, ""},  ValueInfo{"value_6", kInt, ""},
    ValueInfo{"value_7", kInt, ""},  ValueInfo{"value_8", kInt, ""},
    ValueInfo{"value_9", kInt, ""},  ValueInfo{"value_10", kInt, ""},
    ValueInfo{"value_11", kInt, ""}, ValueInfo{"value_12", kInt, ""},
    ValueInfo{"value_13", kInt, ""}, ValueInfo{"value_14", kInt, ""},
    ValueInfo{"value_15", kInt, ""}, ValueInfo{"value_16", kInt, ""},
    ValueInfo{"value_17", kInt, ""}, ValueInfo{"value_18", kInt, ""},
    ValueInfo{"value_19", kInt, ""}, ValueInfo{"value_20", kInt, ""},
};

/// `count` int values, named after their positions.
std::vector<ValueInfo> PositionalInts(std::size_t count) {
  return {kPositionalInts.begin(), kPositionalInts.begin() + count};
}

struct Entry {
  std::string_view name;
  std::vector<ValueInfo> values;
};

/// The catalogue's entry for a record's atom. The catalogue does not compile while a record has
/// none.
template <typename Record>
Entry EntryOf() = delete;

template <>
Entry EntryOf<atoms::SensorHalErrorDetected>() {
  return {"SensorHalErrorDetected",
          {
              kSensorIdHigh,
              kSensorIdLow,
              {"hal_call", kInt, "the call that failed"},
              {"error_code", kInt, "what the call returned"},
          }};
}

template <>
Entry EntryOf<atoms::SensorRuntimeErrorDetected>() {
  return {"SensorRuntimeErrorDetected",
          {
              kSensorIdHigh,
              kSensorIdLow,
              {"error_type", kInt, "the kind of failure"},
              {"error_code", kInt, "the failure's code"},
          }};
}

template <>
Entry EntryOf<atoms::SensorProcessorDiagnosticsReported>() {
  return {"SensorProcessorDiagnosticsReported", PositionalInts(4)};
}

template <>
Entry EntryOf<atoms::SensorSystemQueueStressReported>() {
  std::vector<ValueInfo> values = PositionalInts(6);
  values.insert(values.begin(), {"queue_type", kInt, "the system queue: 1, 2 or 3"});
  return {"SensorSystemQueueStressReported", std::move(values)};
}

template <>
Entry EntryOf<atoms::SensorIpcErrorRateReported>() {
  return {"SensorIpcErrorRateReported", PositionalInts(4)};
}

template <>
Entry EntryOf<atoms::SensorMemoryPressureReported>() {
  return {"SensorMemoryPressureReported",
          {
              {"shared_value", kInt, ""},
              {"pressure_value_1", kInt, ""},
              {"pressure_value_2", kInt, ""},
              {"pressure_value_3", kInt, ""},
              {"pressure_value_4", kFloat, ""},
          }};
}

template <>
Entry EntryOf<atoms::HingeAngleStateChanged>() {
  return {"HingeAngleStateChanged", PositionalInts(2)};
}

template <>
Entry EntryOf<atoms::TarnSensorUsageReported>() {
  return {"TarnSensorUsageReported", PositionalInts(7)};
}

template <>
Entry EntryOf<atoms::TarnServerWorkerUsageReported>() {
  return {"TarnServerWorkerUsageReported", PositionalInts(5)};
}

template <>
Entry EntryOf<atoms::SensorGatingContextReported>() {
  return {"SensorGatingContextReported", PositionalInts(9)};
}

template <>
Entry EntryOf<atoms::SensorCoreDramExceptionsReported>() {
  return {"SensorCoreDramExceptionsReported", PositionalInts(5)};
}

template <>
Entry EntryOf<atoms::ProxStatusReported>() {
  std::vector<ValueInfo> values;
  const SensorVela::TarnVelaProxEvent event;
  trace_format::ForEachNamedField(event, [&]<typename Field>(std::string_view name, const Field&) {
    values.push_back({name, std::is_same_v<Field, float> ? kFloat : kInt, ""});
  });
  return {"ProxStatusReported", std::move(values)};
}

template <>
Entry EntryOf<atoms::HingeHallSensorTriggered>() {
  return {"HingeHallSensorTriggered", {{"value_1", kBool, ""}}};
}

template <>
Entry EntryOf<atoms::HalSensorStateChanged>() {
  return {
      "HalSensorStateChanged",
      {
          kSensorIdHigh,
          kSensorIdLow,
          {"state", kInt, "1: disabled, 2: enabled"},
          {"sampling_period_ns", kLong, "nanoseconds; -1 when disabled"},
          {"sample_count", kInt, "samples since the last enable; -1 when enabled"},
          {"late_sample_count", kInt,
           "of these, samples more than 1.1 sampling periods after the one before, or the enable; "
           "-1 when enabled"},
          {"latency_histogram", kInts,
           "samples by latency: up to 2.5 ms, 5 ms, 10 ms, 20 ms, and more; empty when enabled"},
      }};
}

template <>
Entry EntryOf<atoms::SensorHalLatencyRecorded>() {
  return {"SensorHalLatencyRecorded",
          {
              kSensorIdHigh,
              kSensorIdLow,
              {"operation", kInt, "the operation that was timed"},
              {"latency_ns", kLong, "nanoseconds that it took"},
          }};
}

template <>
Entry EntryOf<atoms::SensorFirmwareStateChanged>() {
  return {"SensorFirmwareStateChanged",
          {
              {"subject_id", kInt, ""},
              {"state", kInt, "the state that the firmware entered"},
              {"detail_code", kInt, ""},
          }};
}

template <>
Entry EntryOf<atoms::SensorFirstSampleReported>() {
  return {"SensorFirstSampleReported",
          {
              kSensorIdHigh,
              kSensorIdLow,
              {"first_sample_latency_ns", kLong,
               "nanoseconds from the enable to the first sample's arrival, or from boot without an "
               "enable"},
          }};
}

template <>
Entry EntryOf<atoms::AlsLuxLevelDistributionReported>() {
  return {"AlsLuxLevelDistributionReported", PositionalInts(16)};
}

template <>
Entry EntryOf<atoms::SensorMemoryServiceabilityStatsReported>() {
  return {"SensorMemoryServiceabilityStatsReported",
          {
              {"bucket_allocation_total", kInt, "the sum of bucket_allocation_count"},
              {"shared_value", kInt, ""},
              {"serviceability_value_1", kInt, ""},
              {"serviceability_value_2", kInt, ""},
              {"bucket_allocation_count", kInts, "20 bucket counts"},
              {"bucket_duration_ms", kInts, "20 bucket counts"},
          }};
}

template <>
Entry EntryOf<atoms::AADProxStatsReported>() {
  std::vector<ValueInfo> values = PositionalInts(20);
  for (std::size_t i = 8; i < 14; ++i) values[i].kind = kFloat;
  return {"AADProxStatsReported", std::move(values)};
}

}  // namespace

const std::vector<AtomInfo>& AtomCatalogue() {
  static const std::vector<AtomInfo> kAtoms = [] {
    std::vector<AtomInfo> all;
    atoms::AllRecords::ForEach([&]<typename Record>() {
      Entry entry = EntryOf<Record>();
      all.push_back({Record::kAtomId, entry.name, std::move(entry.values)});
    });
    return all;
  }();
  return kAtoms;
}

const AtomInfo* FindAtom(std::int32_t id) {
  for (const AtomInfo& atom : AtomCatalogue()) {
    if (atom.id == id) return &atom;
  }
  return nullptr;
}

std::string NameOfAtom(std::int32_t id) {
  const AtomInfo* info = FindAtom(id);
  return info != nullptr ? std::string(info->name) : "atom " + std::to_string(id);
}

std::string AtomName(const VendorAtom& atom) { return NameOfAtom(atom.atomId); }

std::string ValueName(const VendorAtom& atom, std::size_t index) {
  const AtomInfo* info = FindAtom(atom.atomId);
  if (info != nullptr && index < info->values.size()) return std::string(info->values[index].name);
  return "value_" + std::to_string(index + 1);
}

const VendorAtomValue* FindValue(const VendorAtom& atom, std::string_view name) {
  const AtomInfo* info = FindAtom(atom.atomId);
  if (info == nullptr) return nullptr;
  const std::size_t known = std::min(info->values.size(), atom.values.size());
  for (std::size_t i = 0; i < known; ++i) {
    if (info->values[i].name == name) return &atom.values[i];
  }
  return nullptr;
}

}  // namespace sensorvela::testkit
