// What a run's samples say about one sensor.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "engine/counting_rules.h"

namespace sensorvela::tools {

struct SampleCounts {
  std::uint64_t samples = 0;
  std::uint64_t late = 0;
  /// By latency.
  std::array<std::uint64_t, kLatencyBands> bands = {};

  SampleCounts& operator+=(const SampleCounts& other);
};

/// A sample, counted as the engine counts it.
struct SampleFact {
  std::size_t band;
  bool is_late;
};

struct FirstSample {
  simulated::VirtualTime::Instant at;
  /// None if the sensor has never been enabled.
  std::optional<std::chrono::nanoseconds> since_enable;
};

/// From an enable to the next enable, the disable or the end of the run; or such a time in which
/// the sensor was not enabled but had its first sample since the last enable.
struct SensorSpan {
  simulated::VirtualTime::Instant end;
  /// None if the sensor was not enabled.
  std::optional<simulated::VirtualTime::Instant> enabled_at;
  std::int64_t period_ns;
  /// The samples since the last enable.
  std::uint64_t samples;
  std::optional<FirstSample> first_sample;
};

/// The calls are in the order of time.
class SensorFacts {
 public:
  using Instant = simulated::VirtualTime::Instant;

  void Enable(Instant at, std::int64_t period_ns);
  void Disable() { is_enabled_ = false; }
  SampleFact Sample(Instant at, std::int64_t timestamp_ns);

  /// Ends the present span; none if there is nothing to say about it.
  std::optional<SensorSpan> EndSpan(Instant at);

  /// Samples since the last enable.
  std::uint64_t samples_since_enable() const { return samples_since_enable_; }

  /// The number of enables so far.
  std::uint64_t enables() const { return enables_; }

  /// The stats service has accepted the atom of a disable that came after so many enables. Atoms
  /// come in the order in which they were queued.
  void CountReport(std::uint64_t enables, const SensorVela::VendorAtom& disable);

  /// All samples, as they arrived.
  const SampleCounts& arrived() const { return arrived_; }

  /// All samples that the accepted reports have.
  SampleCounts reported() const;

 private:
  SampleCounts arrived_;
  std::uint64_t enables_ = 0;
  bool is_enabled_ = false;
  std::int64_t period_ns_ = 0;
  std::optional<Instant> last_enable_;
  std::uint64_t samples_since_enable_ = 0;
  /// Of the present span.
  std::optional<FirstSample> first_sample_;

  // As in the engine, also before the first enable.
  std::int64_t last_timestamp_ns_ = 0;
  std::int64_t gap_threshold_ns_ = 0;

  /// The last report, which has all samples since its enable, and the enables before it.
  SampleCounts last_report_;
  std::uint64_t last_report_enables_ = 0;
  /// What the reports before that enable have.
  SampleCounts earlier_reports_;
};

}  // namespace sensorvela::tools
