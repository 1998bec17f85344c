// What the picture shows of one sensor.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tools/picture/bounded_list.h"
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

  /// The run ends. Must be the last call.
  void Finish(Instant at) { EndSpan(at); }

  /// Instants are counted from `begin`. "bins" has runs of equal bins: the first one's index, how
  /// many they are, the late samples in each, and its samples by latency, without the zeros at the
  /// end. Bins without a sample are left out.
  Json ToJson(Instant begin) const;

 private:
  struct Bin {
    std::uint64_t late = 0;
    std::array<std::uint64_t, 5> bands = {};

    bool operator==(const Bin&) const = default;
  };

  struct Span {
    Instant from = {};
    Instant to = {};
    std::int64_t period_ns = 0;
    std::uint64_t samples = 0;
  };

  struct Mark {
    Instant at = {};
    /// A first sample's time since the enable, negative if there was none; how many samples a
    /// disable ends.
    std::int64_t value = 0;
  };

  void EndSpan(Instant at);
  Json BinRuns() const;

  static constexpr std::size_t kMaxSpans = 500;

  TimeBins time_bins_;
  /// Empty before the first sample.
  std::vector<Bin> bins_;
  /// None while the sensor is disabled.
  std::optional<Span> enabled_;
  BoundedList<Span> spans_{kMaxSpans};
  BoundedList<Mark> firsts_{kMaxSpans};
  BoundedList<Mark> disables_{kMaxSpans};

  // Since the last enable, as in the engine.
  std::uint64_t samples_ = 0;
  std::optional<Instant> enabled_at_;
  std::int64_t last_timestamp_ns_ = 0;
  std::int64_t gap_threshold_ns_ = 0;
};

}  // namespace sensorvela::replay
