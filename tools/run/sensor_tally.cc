#include "tools/run/sensor_tally.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;
using android::hardware::halvard::orrin::vendor::OrrinAtoms::HalSensorStateChanged;
using Tag = VendorAtomValue::Tag;

constexpr std::int32_t kDisabled = 1;

/// Atoms carry the unsigned counts in signed values.
std::uint64_t Count(std::int32_t value) { return static_cast<std::uint32_t>(value); }

/// Checks the values' kinds, too, because an outside atom may have the same identifier.
bool IsStateChange(const SensorVela::VendorAtom& atom) {
  return atom.atomId == HalSensorStateChanged::kAtomId && atom.reverseDomainName.empty() &&
         std::ranges::equal(atom.values, testkit::FindAtom(atom.atomId)->values, {},
                            &VendorAtomValue::getTag, &testkit::ValueInfo::kind);
}

/// An int value of a state change's atom.
std::int32_t Int(const SensorVela::VendorAtom& atom, std::string_view name) {
  return testkit::FindValue(atom, name)->get<Tag::intValue>();
}

ReportedSamples CountsOf(const SensorVela::VendorAtom& atom) {
  ReportedSamples counts = {.samples = Count(Int(atom, "sample_count")),
                            .late = Count(Int(atom, "late_sample_count"))};
  const auto& bands = testkit::FindValue(atom, "latency_histogram")->get<Tag::repeatedIntValue>();
  if (bands && bands->size() == counts.bands.size()) {
    std::ranges::transform(*bands, counts.bands.begin(), Count);
  }
  return counts;
}

ReportedSamples Sum(const ReportedSamples& a, const ReportedSamples& b) {
  ReportedSamples sum = {.samples = a.samples + b.samples, .late = a.late + b.late};
  std::ranges::transform(a.bands, b.bands, sum.bands.begin(), std::plus<>());
  return sum;
}

}  // namespace

void SensorTally::CountSample(SensorVela::SensorId sensor) {
  ++entries_[{sensor.high, sensor.low}].delivered;
}

void SensorTally::CountAtom(const SensorVela::VendorAtom& atom, bool is_taken) {
  if (!IsStateChange(atom)) return;
  const auto high = static_cast<std::uint32_t>(Int(atom, "sensor_id_high"));
  Entry& entry = entries_[{high, Int(atom, "sensor_id_low")}];
  const bool is_disable = Int(atom, "state") == kDisabled;
  if (is_disable && !is_taken) return;
  const ReportedSamples reported = is_disable ? CountsOf(atom) : ReportedSamples{};
  // Between enables counts only grow, so a smaller one follows an enable that was dropped.
  if (!is_disable || reported.samples < entry.open.samples) {
    entry.closed = Sum(entry.closed, entry.open);
  }
  entry.open = reported;
}

std::vector<SensorSummary> SensorTally::Summaries() const {
  std::vector<SensorSummary> summaries;
  for (const auto& [id, entry] : entries_) {
    summaries.push_back({{id.first, id.second}, entry.delivered, Sum(entry.closed, entry.open)});
  }
  return summaries;
}

}  // namespace sensorvela::replay
