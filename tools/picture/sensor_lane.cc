#include "tools/picture/sensor_lane.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "engine/wrapping_arithmetic.h"

namespace sensorvela::replay {
namespace {

constexpr std::array<std::int64_t, 4> kBandLimitsNs = {2'500'000, 5'000'000, 10'000'000,
                                                       20'000'000};

/// The longest time between two samples that are not late.
std::int64_t GapThresholdNs(std::int64_t period_ns) {
  const float threshold_ns = static_cast<float>(period_ns) * 1.1F;
  constexpr float kTwoTo63 = 9223372036854775808.0F;
  if (threshold_ns >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (threshold_ns < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(threshold_ns);
}

std::size_t BandOf(std::int64_t latency_ns) {
  return static_cast<std::size_t>(std::ranges::lower_bound(kBandLimitsNs, latency_ns) -
                                  kBandLimitsNs.begin());
}

}  // namespace

void SensorLane::Enable(Instant at, std::int64_t period_ns) {
  EndSpan(at);
  enabled_ = {{at, at}, period_ns, 0};
  samples_ = 0;
  enabled_at_ = at;
  last_timestamp_ns_ = at.count();
  gap_threshold_ns_ = GapThresholdNs(period_ns);
}

void SensorLane::Disable(Instant at) {
  EndSpan(at);
  disables_.Add({{at, at}, samples_});
}

void SensorLane::Sample(Instant at, std::int64_t timestamp_ns) {
  if (bins_.empty()) bins_.resize(time_bins_.count);
  Bin& bin = bins_[time_bins_.IndexOf(at)];
  ++bin.bands[BandOf(WrappingSubtract<std::int64_t>(at.count(), timestamp_ns))];
  if (WrappingSubtract<std::int64_t>(timestamp_ns, last_timestamp_ns_) > gap_threshold_ns_) {
    ++bin.late;
  }
  last_timestamp_ns_ = timestamp_ns;
  if (samples_++ == 0) firsts_.Add({{at, at}, enabled_at_ ? (at - *enabled_at_).count() : -1});
}

void SensorLane::Finish(Instant at, std::size_t lanes) {
  EndSpan(at);
  const std::size_t limit = kMaxSpansOfAllLanes / lanes;
  spans_.ThinTo(limit);
  firsts_.ThinTo(limit);
  disables_.ThinTo(limit);
}

void SensorLane::EndSpan(Instant at) {
  if (!enabled_) return;
  enabled_->to = at;
  enabled_->samples = samples_;
  spans_.Add(*enabled_);
  enabled_.reset();
}

Json SensorLane::ToJson(Instant begin) const {
  const auto offset = [begin](Instant at) { return (at - begin).count(); };
  const auto mark = [&](const Occurrence& m, Json value) {
    Json json = {offset(m.from), std::move(value)};
    if (m.times > 1) json.insert(json.end(), {m.times, offset(m.to)});
    return json;
  };
  const auto span = [&](const Span& s) {
    Json json = {offset(s.from), offset(s.to), s.period_ns ? Json(*s.period_ns) : Json(),
                 s.samples};
    if (s.times > 1) json.push_back(s.times);
    return json;
  };
  return {{"spans", spans_.ToJson(span)},
          {"firsts", firsts_.ToJson([&](const First& f) { return mark(f, f.since_ns); })},
          {"disables", disables_.ToJson([&](const End& e) { return mark(e, e.samples); })},
          {"bins", BinRuns()}};
}

Json SensorLane::BinRuns() const {
  Json runs = Json::array();
  for (auto bin = bins_.begin(); bin != bins_.end();) {
    const auto next =
        std::find_if(bin, bins_.end(), [bin](const Bin& other) { return other != *bin; });
    if (*bin != Bin()) {
      Json run = {bin - bins_.begin(), next - bin, bin->late};
      for (const std::uint64_t samples : bin->bands) run.push_back(samples);
      while (run.back() == 0) run.erase(run.size() - 1);
      runs.push_back(std::move(run));
    }
    bin = next;
  }
  return runs;
}

}  // namespace sensorvela::replay
