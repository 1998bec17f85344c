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

std::optional<double> Arrivals::RateHz() const {
  const std::int64_t median_ns = interval_ns.Percentile(0.5);
  return median_ns > 0 ? std::optional(1e9 / static_cast<double>(median_ns)) : std::nullopt;
}

Arrivals& Arrivals::operator+=(const Arrivals& other) {
  counts += other.counts;
  latency_ns += other.latency_ns;
  first_latency_ns += other.first_latency_ns;
  interval_ns += other.interval_ns;
  return *this;
}

NotReported& NotReported::operator+=(const NotReported& other) {
  not_disabled += other.not_disabled;
  re_enabled += other.re_enabled;
  while_disabled += other.while_disabled;
  report_lost += other.report_lost;
  return *this;
}

void SensorFacts::Enable(Instant at, std::int64_t period_ns) {
  (is_enabled_ ? not_reported_.re_enabled : not_reported_.while_disabled) += NotDisabled();
  earlier_at_disables_ += samples_at_disable_;
  samples_at_disable_ = 0;
  ++enables_;
  is_enabled_ = true;
  period_ns_ = period_ns;
  last_enable_ = at;
  samples_since_enable_ = 0;
  last_timestamp_ns_ = at.count();
  gap_threshold_ns_ = GapThresholdNs(period_ns);
}

void SensorFacts::Disable() {
  is_enabled_ = false;
  samples_at_disable_ = samples_since_enable_;
}

SampleFact SensorFacts::Sample(Instant at, std::int64_t timestamp_ns) {
  const auto latency_ns = WrappingSubtract<std::int64_t>(at.count(), timestamp_ns);
  const auto interval_ns = WrappingSubtract(timestamp_ns, last_timestamp_ns_);
  const SampleFact sample = {LatencyBand(latency_ns),
                             IsLate(timestamp_ns, last_timestamp_ns_, gap_threshold_ns_)};
  ++arrived_.counts.samples;
  if (sample.is_late) ++arrived_.counts.late;
  ++arrived_.counts.bands.at(sample.band);
  arrived_.latency_ns.Add(latency_ns);
  last_timestamp_ns_ = timestamp_ns;
  if (samples_since_enable_++ > 0) {
    if (interval_ns >= 0) arrived_.interval_ns.Add(interval_ns);
    return sample;
  }
  first_sample_ = FirstSample{at, std::nullopt};
  if (last_enable_) {
    first_sample_->since_enable = at - *last_enable_;
    arrived_.first_latency_ns.Add(first_sample_->since_enable->count());
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
  has_report_ = true;
}

std::optional<SampleCounts> SensorFacts::reported() const {
  if (!has_report_) return std::nullopt;
  SampleCounts reported = earlier_reports_;
  return reported += last_report_;
}

NotReported SensorFacts::not_reported() const {
  NotReported all = not_reported_;
  (is_enabled_ ? all.not_disabled : all.while_disabled) += NotDisabled();
  const std::uint64_t at_disables = earlier_at_disables_ + samples_at_disable_;
  const auto reported_all = reported();
  const std::uint64_t reported_samples = reported_all ? reported_all->samples : 0;
  if (at_disables > reported_samples) all.report_lost = at_disables - reported_samples;
  return all;
}

}  // namespace sensorvela::tools
