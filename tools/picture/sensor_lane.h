// What the picture shows of one sensor.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/picture/thinned_list.h"
#include "tools/picture/time_bins.h"
#include "tools/text/atom_json.h"

namespace sensorvela::replay {

/// Counts the sensor's samples in each bin, by latency and by lateness as the engine does. Keeps
/// the spans in which the sensor was enabled, its first samples and its disables. The calls must be
/// in the order of time.
class SensorLane {
 public:
  using Instant = TimeBins::Instant;

  explicit SensorLane(const TimeBins& bins) : time_bins_(bins) {}

  void Enable(Instant at, std::int64_t period_ns);
  void Disable(Instant at);
  void Sample(Instant at, std::int64_t timestamp_ns);

  /// The run ends. Must be the last call. `lanes` share the place in the file.
  void Finish(Instant at, std::size_t lanes);

  /// Instants are counted from `begin`. A span has its ends, its period, its samples and, if it is
  /// several, their number; several marks have their number and the last one's instant. "bins" has
  /// runs of equal bins: the first one's index, how many they are, the late samples in each, and
  /// its samples by latency, without the zeros at the end. Bins without a sample are left out.
  Json ToJson(Instant begin) const;

 private:
  struct Bin {
    std::uint64_t late = 0;
    std::array<std::uint64_t, 5> bands = {};

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

  /// How many samples a disable ends.
  struct End : Occurrence {
    std::uint64_t samples = 0;

    void Absorb(const End& next) { samples += next.samples; }
  };

  void EndSpan(Instant at);
  Json BinRuns() const;

  static constexpr std::size_t kMaxSpans = 2000;
  static constexpr std::size_t kMaxSpansOfAllLanes = 8000;

  TimeBins time_bins_;
  /// Empty before the first sample.
  std::vector<Bin> bins_;
  /// None while the sensor is disabled.
  std::optional<Span> enabled_;
  ThinnedList<Span> spans_{kMaxSpans};
  ThinnedList<First> firsts_{kMaxSpans};
  ThinnedList<End> disables_{kMaxSpans};

  // Since the last enable, as in the engine.
  std::uint64_t samples_ = 0;
  std::optional<Instant> enabled_at_;
  std::int64_t last_timestamp_ns_ = 0;
  std::int64_t gap_threshold_ns_ = 0;
};

}  // namespace sensorvela::replay
