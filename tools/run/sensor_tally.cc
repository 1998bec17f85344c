#include "tools/run/sensor_tally.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;
using Tag = VendorAtomValue::Tag;

/// Atoms carry the unsigned counts in signed values.
std::uint64_t Count(std::int32_t value) { return static_cast<std::uint32_t>(value); }

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

void SensorTally::CountReport(const Stretch& stretch, const SensorVela::VendorAtom& disable) {
  Entry& entry = EntryOf(stretch.sensor);
  if (stretch.number != entry.last_reported_stretch) {
    entry.before = Sum(entry.before, entry.last);
    entry.last_reported_stretch = stretch.number;
  }
  entry.last = CountsOf(disable);
}

std::vector<SensorSummary> SensorTally::Summaries() const {
  std::vector<SensorSummary> summaries;
  for (const auto& [id, entry] : entries_) {
    summaries.push_back({{id.first, id.second}, entry.delivered, Sum(entry.before, entry.last)});
  }
  return summaries;
}

}  // namespace sensorvela::replay
