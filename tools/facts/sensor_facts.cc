#include "tools/facts/sensor_facts.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::tools {
namespace {

using Tag = aidl::android::frameworks::stats::VendorAtomValue::Tag;

/// Atoms carry the unsigned counts in signed values.
std::uint64_t Count(std::int32_t value) { return static_cast<std::uint32_t>(value); }

std::uint64_t Count(const SensorVela::VendorAtom& atom, std::string_view name) {
  return Count(testkit::FindValue(atom, name)->get<Tag::intValue>());
}

SampleCounts CountsOf(const SensorVela::VendorAtom& disable) {
  SampleCounts counts = {.samples = Count(disable, "sample_count"),
                         .late = Count(disable, "late_sample_count")};
  const auto& bands =
      testkit::FindValue(disable, "latency_histogram")->get<Tag::repeatedIntValue>();
  if (bands && bands->size() == counts.bands.size()) {
    std::ranges::transform(*bands, counts.bands.begin(),
                           [](std::int32_t value) { return Count(value); });
  }
  return counts;
}

}  // namespace

SampleCounts& SampleCounts::operator+=(const SampleCounts& other) {
  samples += other.samples;
  late += other.late;
  std::ranges::transform(bands, other.bands, bands.begin(), std::plus<>());
  return *this;
}

void SensorFacts::Enable(Instant at, std::int64_t period_ns) {
  ++enables_;
  is_enabled_ = true;
  period_ns_ = period_ns;
  last_enable_ = at;
  samples_since_enable_ = 0;
  last_timestamp_ns_ = at.count();
  gap_threshold_ns_ = GapThresholdNs(period_ns);
}

SampleFact SensorFacts::Sample(Instant at, std::int64_t timestamp_ns) {
  const SampleFact sample = {LatencyBand(WrappingSubtract<std::int64_t>(at.count(), timestamp_ns)),
                             IsLate(timestamp_ns, last_timestamp_ns_, gap_threshold_ns_)};
  ++arrived_.samples;
  if (sample.is_late) ++arrived_.late;
  ++arrived_.bands.at(sample.band);
  last_timestamp_ns_ = timestamp_ns;
  if (samples_since_enable_++ == 0) {
    first_sample_ =
        FirstSample{at, last_enable_ ? std::optional<std::chrono::nanoseconds>(at - *last_enable_)
                                     : std::nullopt};
  }
  return sample;
}

std::optional<SensorSpan> SensorFacts::EndSpan(Instant at) {
  if (!is_enabled_ && !first_sample_) return std::nullopt;
  return SensorSpan{.end = at,
                    .enabled_at = is_enabled_ ? last_enable_ : std::nullopt,
                    .period_ns = period_ns_,
                    .samples = samples_since_enable_,
                    .first_sample = std::exchange(first_sample_, std::nullopt)};
}

void SensorFacts::CountReport(std::uint64_t enables, const SensorVela::VendorAtom& disable) {
  if (enables != last_report_enables_) {
    earlier_reports_ += last_report_;
    last_report_enables_ = enables;
  }
  last_report_ = CountsOf(disable);
}

SampleCounts SensorFacts::reported() const {
  SampleCounts reported = earlier_reports_;
  return reported += last_report_;
}

}  // namespace sensorvela::tools
