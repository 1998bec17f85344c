// What the picture shows of one sensor.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/facts/sensor_facts.h"
#include "tools/picture/thinned_list.h"
#include "tools/picture/time_bins.h"
#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// Counts the sensor's samples in each bin. Keeps the spans in which the sensor was enabled, its
/// first samples and its disables. The calls must be in the order of time.
class SensorLane {
 public:
  using Instant = TimeBins::Instant;

  explicit SensorLane(const TimeBins& bins) : time_bins_(bins) {}

  void AddSpan(const SensorSpan& span);
  void Disable(Instant at, std::uint64_t samples_since_enable);
  void Sample(Instant at, const SampleFact& sample);

  /// The run ends. Must be the last call. `lanes` share the place in the file.
  void Finish(std::size_t lanes);

  /// Instants are counted from `begin`. A span has its ends, its period, its samples and, if it is
  /// several, their number; several marks have their number and the last one's instant. "bins" has
  /// runs of equal bins: the first one's index, how many they are, the late samples in each, and
  /// its samples by latency, without the zeros at the end. Bins without a sample are left out.
  Json ToJson(Instant begin) const;

 private:
  struct Bin {
    std::uint64_t late = 0;
    std::array<std::uint64_t, kLatencyBands> bands = {};

    bool operator==(const Bin&) const = default;
  };

  struct Span : Occurrence {
    /// None for several spans with different periods.
    std::optional<std::int64_t> period_ns;
    std::uint64_t samples = 0;

    void Absorb(const Span& next) {
      if (period_ns != next.period_ns) period_ns.reset();
      samples += next.samples;
    }
  };

  /// The time from an enable to the first sample; negative if there was no enable.
  struct First : Occurrence {
    std::int64_t since_ns = 0;

    void Absorb(const First& next) { since_ns = std::max(since_ns, next.since_ns); }
  };

  Json BinRuns() const;

  static constexpr std::size_t kMaxSpans = 2000;
  static constexpr std::size_t kMaxSpansOfAllLanes = 8000;

  TimeBins time_bins_;
  /// Empty before the first sample.
  std::vector<Bin> bins_;
  ThinnedList<Span> spans_{kMaxSpans};
  ThinnedList<First> firsts_{kMaxSpans};
  /// Their numbers are the samples that they end.
  ThinnedList<Counted> disables_{kMaxSpans};
};

}  // namespace sensorvela::tools
