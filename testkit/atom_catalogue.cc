#include "testkit/atom_catalogue.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "atoms/all_records.h"
#include "trace_format/record_fields.h"

namespace sensorvela::testkit {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

namespace {

/// A value's name and meaning, as in `ValueInfo`.
struct ValueWords {
  std::string_view name{};
  std::string_view meaning{};
};

constexpr std::size_t kMostValues = 20;

struct AtomWords {
  std::int32_t id;
  std::string_view name;
  /// Those of the atom's first values, in order. The rest are called `value_1`, `value_2`, ...
  ValueWords values[kMostValues] = {};
};

constexpr std::array<std::string_view, kMostValues> kNumberedNames = {
    "value_1",  "value_2",  "value_3",  "value_4",  "value_5",  "value_6",  "value_7",
    "value_8",  "value_9",  "value_10", "value_11", "value_12", "value_13", "value_14",
    "value_15", "value_16", "value_17", "value_18", "value_19", "value_20"};

constexpr ValueWords kSensorIdHigh = {
    "sensor_id_high", "the sensor identifier's unsigned half, its bits as they are"};
constexpr ValueWords kSensorIdLow = {"sensor_id_low", "the sensor identifier's signed half"};

constexpr AtomWords kProxStatus = [] {
  AtomWords atom = {atoms::ProxStatusReported::kAtomId, "ProxStatusReported"};
  ValueWords* value = atom.values;
  const SensorVela::TarnVelaProxEvent event;
  trace_format::ForEachNamedField(
      event, [&](std::string_view name, const auto&) { (value++)->name = name; });
  return atom;
}();

/// In the order of `AllRecords`.
constexpr AtomWords kAtomWords[] = {
    {atoms::SensorHalErrorDetected::kAtomId,
     "SensorHalErrorDetected",
     {kSensorIdHigh,
      kSensorIdLow,
      {"hal_call", "the call that failed"},
      {"error_code", "what the call returned"}}},
    {atoms::SensorRuntimeErrorDetected::kAtomId,
     "SensorRuntimeErrorDetected",
     {kSensorIdHigh,
      kSensorIdLow,
      {"error_type", "the kind of failure"},
      {"error_code", "the failure's code"}}},
    {atoms::SensorProcessorDiagnosticsReported::kAtomId, "SensorProcessorDiagnosticsReported"},
    {atoms::SensorSystemQueueStressReported::kAtomId,
     "SensorSystemQueueStressReported",
     {{"queue_type", "the system queue: 1, 2 or 3"}}},
    {atoms::SensorIpcErrorRateReported::kAtomId, "SensorIpcErrorRateReported"},
    {atoms::SensorMemoryPressureReported::kAtomId,
     "SensorMemoryPressureReported",
     {{"shared_value"},
      {"pressure_value_1"},
      {"pressure_value_2"},
      {"pressure_value_3"},
      {"pressure_value_4"}}},
    {atoms::HingeAngleStateChanged::kAtomId, "HingeAngleStateChanged"},
    {atoms::TarnSensorUsageReported::kAtomId, "TarnSensorUsageReported"},
    {atoms::TarnServerWorkerUsageReported::kAtomId, "TarnServerWorkerUsageReported"},
    {atoms::SensorGatingContextReported::kAtomId, "SensorGatingContextReported"},
    {atoms::SensorCoreDramExceptionsReported::kAtomId, "SensorCoreDramExceptionsReported"},
    kProxStatus,
    {atoms::HingeHallSensorTriggered::kAtomId, "HingeHallSensorTriggered"},
    {atoms::HalSensorStateChanged::kAtomId,
     "HalSensorStateChanged",
     {kSensorIdHigh,
      kSensorIdLow,
      {"state", "1: disabled, 2: enabled"},
      {"sampling_period_ns", "nanoseconds; -1 when disabled"},
      {"sample_count", "samples since the last enable; -1 when enabled"},
      {"late_sample_count",
       "of these, samples more than 1.1 sampling periods after the one before, or the enable; "
       "-1 when enabled"},
      {"latency_histogram",
       "samples by latency: up to 2.5 ms, 5 ms, 10 ms, 20 ms, and more; empty when enabled"}}},
    {atoms::SensorHalLatencyRecorded::kAtomId,
     "SensorHalLatencyRecorded",
     {kSensorIdHigh,
      kSensorIdLow,
      {"operation", "the operation that was timed"},
      {"latency_ns", "nanoseconds that it took"}}},
    {atoms::SensorFirmwareStateChanged::kAtomId,
     "SensorFirmwareStateChanged",
     {{"subject_id"}, {"state", "the state that the firmware entered"}, {"detail_code"}}},
    {atoms::SensorFirstSampleReported::kAtomId,
     "SensorFirstSampleReported",
     {kSensorIdHigh,
      kSensorIdLow,
      {"first_sample_latency_ns",
       "nanoseconds from the enable to the first sample's arrival, or from boot without an "
       "enable"}}},
    {atoms::AlsLuxLevelDistributionReported::kAtomId, "AlsLuxLevelDistributionReported"},
    {atoms::SensorMemoryServiceabilityStatsReported::kAtomId,
     "SensorMemoryServiceabilityStatsReported",
     {{"bucket_allocation_total", "the sum of bucket_allocation_count"},
      {"shared_value"},
      {"serviceability_value_1"},
      {"serviceability_value_2"},
      {"bucket_allocation_count", "20 bucket counts"},
      {"bucket_duration_ms", "20 bucket counts"}}},
    {atoms::AADProxStatsReported::kAtomId, "AADProxStatsReported"},
};
static_assert(std::ranges::equal(kAtomWords, atoms::AllRecords::kAtomIds, {}, &AtomWords::id),
              "each record needs an entry in its place");

/// The kinds are those of `atom`, which a builder has made.
AtomInfo InfoOf(const AtomWords& words, const VendorAtom& atom) {
  AtomInfo info = {words.id, words.name, {}};
  std::size_t numbered = 0;
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    const auto [name, meaning] = i < kMostValues ? words.values[i] : ValueWords();
    info.values.push_back(
        {name.empty() ? kNumberedNames.at(numbered++) : name, atom.values[i].getTag(), meaning});
  }
  return info;
}

}  // namespace

const std::vector<AtomInfo>& AtomCatalogue() {
  static const std::vector<AtomInfo> kAtoms = [] {
    std::vector<AtomInfo> all;
    atoms::AllRecords::ForEach([&]<typename Record>() {
      all.push_back(InfoOf(kAtomWords[all.size()], createVendorAtom(Record())));
    });
    return all;
  }();
  return kAtoms;
}

const AtomInfo* FindAtom(std::int32_t id) {
  const std::vector<AtomInfo>& all = AtomCatalogue();
  const auto atom = std::ranges::find(all, id, &AtomInfo::id);
  return atom != all.end() ? &*atom : nullptr;
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
