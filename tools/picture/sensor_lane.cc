#include "tools/picture/sensor_lane.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace sensorvela::tools {

void SensorLane::AddSpan(const SensorSpan& span) {
  if (span.enabled_at) {
    spans_.Add({{*span.enabled_at, span.end}, span.period_ns, span.samples});
  }
  if (const auto& first = span.first_sample) {
    firsts_.Add({{first->at, first->at}, first->since_enable ? first->since_enable->count() : -1});
  }
}

void SensorLane::Disable(Instant at, std::uint64_t samples_since_enable) {
  disables_.Add({{at, at}, "", samples_since_enable});
}

void SensorLane::Sample(Instant at, const SampleFact& sample) {
  if (bins_.empty()) bins_.resize(time_bins_.count);
  Bin& bin = bins_[time_bins_.IndexOf(at)];
  ++bin.bands.at(sample.band);
  if (sample.is_late) ++bin.late;
}

void SensorLane::Finish(std::size_t lanes) {
  const std::size_t limit = kMaxSpansOfAllLanes / lanes;
  spans_.ThinTo(limit);
  firsts_.ThinTo(limit);
  disables_.ThinTo(limit);
}

Json SensorLane::ToJson(Instant begin) const {
  const auto span = [begin](const Span& s) {
    return s.SpanToJson(begin, {s.period_ns ? Json(*s.period_ns) : Json(), s.samples});
  };
  const auto first = [begin](const First& f) { return f.MarkToJson(begin, {f.since_ns}); };
  const auto disable = [begin](const Counted& d) { return d.MarkToJson(begin, {d.number}); };
  return {{"spans", spans_.ToJson(span)},
          {"firsts", firsts_.ToJson(first)},
          {"disables", disables_.ToJson(disable)},
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

}  // namespace sensorvela::tools
