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
#include "tools/facts/log_histogram.h"

namespace sensorvela::tools {

struct SampleCounts {
  std::uint64_t samples = 0;
  std::uint64_t late = 0;
  /// By latency.
  std::array<std::uint64_t, kLatencyBands> bands = {};

  SampleCounts& operator+=(const SampleCounts& other);
};

/// A sensor's samples as they arrived, whatever its reports have.
struct Arrivals {
  SampleCounts counts;
  LogHistogram latency_ns;
  /// From each enable to the first sample after it.
  LogHistogram first_latency_ns;
  /// From each timestamp to the next, between enables; not where they go back.
  LogHistogram interval_ns;

  /// How many samples a second has, by the median interval; none if there is no interval.
  std::optional<double> RateHz() const;

  Arrivals& operator+=(const Arrivals& other);
};

/// Samples that are in no report that the stats service has accepted, by the reason.
struct NotReported {
  /// The sensor has not been disabled yet.
  std::uint64_t not_disabled = 0;
  /// It was enabled anew without a disable, which forgets them.
  std::uint64_t re_enabled = 0;
  /// It was not enabled, and no further disable came.
  std::uint64_t while_disabled = 0;
  /// The report was dropped, failed or has not been sent.
  std::uint64_t report_lost = 0;

  std::uint64_t Total() const { return not_disabled + re_enabled + while_disabled + report_lost; }

  NotReported& operator+=(const NotReported& other);
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
  void Disable();
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

  const Arrivals& arrived() const { return arrived_; }

  /// All samples that the accepted reports have; none before the first one.
  std::optional<SampleCounts> reported() const;

  /// The samples that they do not have.
  NotReported not_reported() const;

 private:
  /// The samples since the last enable that no disable has reported.
  std::uint64_t NotDisabled() const { return samples_since_enable_ - samples_at_disable_; }

  Arrivals arrived_;
  std::uint64_t enables_ = 0;
  bool is_enabled_ = false;
  std::int64_t period_ns_ = 0;
  std::optional<Instant> last_enable_;
  std::uint64_t samples_since_enable_ = 0;
  /// How many of them the last disable has reported.
  std::uint64_t samples_at_disable_ = 0;
  /// Of the present span.
  std::optional<FirstSample> first_sample_;

  // As in the engine, also before the first enable.
  std::int64_t last_timestamp_ns_ = 0;
  std::int64_t gap_threshold_ns_ = 0;

  /// What reports had, or would have had, before the last enable.
  std::uint64_t earlier_at_disables_ = 0;
  /// What was known for certain at the last enable.
  NotReported not_reported_;

  bool has_report_ = false;
  /// The last report, which has all samples since its enable, and the enables before it.
  SampleCounts last_report_;
  std::uint64_t last_report_enables_ = 0;
  /// What the reports before that enable have.
  SampleCounts earlier_reports_;
};

}  // namespace sensorvela::tools
