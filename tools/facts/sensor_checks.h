// Looks for what is wrong with a sensor's enables, disables and samples.
#pragma once

#include <chrono>
#include <cstdint>

#include <sensorvela/engine/sensor_vela.h>

#include "engine/wrapping_arithmetic.h"
#include "tools/facts/clock_checks.h"
#include "tools/facts/findings.h"

namespace sensorvela::tools {

/// Of one sensor. The calls are in the order of time.
class SensorChecks {
 public:
  /// `findings` must outlive the object. The engine started at `start`.
  SensorChecks(SensorVela::SensorId sensor, simulated::VirtualTime::Instant start,
               Findings& findings)
      : sensor_(sensor), start_ns_(start.count()), findings_(findings) {}

  void Enable(const Moment& moment, std::int64_t period_ns);
  void Disable(const Moment& moment);
  void Sample(const Moment& moment, std::int64_t timestamp_ns);

  /// The host reports a first sample beside the engine.
  void FirstSampleReported(const Moment& moment) { AddFirstReport(moment); }

  /// The run ends.
  void End(const Moment& moment);

 private:
  /// What a time from an enable to the next enable or disable says of the sensor.
  struct Span {
    std::int64_t period_ns = 0;
    std::uint64_t samples = 0;
    /// Those whose timestamps are of the right clock, and their latencies.
    std::uint64_t timely = 0;
    std::int64_t least_latency_ns = 0;
    std::int64_t greatest_latency_ns = 0;
    std::uint64_t intervals = 0;
    std::uint64_t fast = 0;
    std::uint64_t slow = 0;
    /// Those that are like the one before, and their sum.
    std::uint64_t steady = 0;
    double steady_ns = 0;
    std::int64_t last_interval_ns = 0;
    Moment first_fast = {};
    Moment first_slow = {};
  };

  bool HasPeriod() const { return span_.period_ns >= kLeastPeriodNs; }
  /// Three in four intervals are like the one before.
  bool IsSteady() const { return 4 * (span_.steady + 1) > 3 * span_.intervals; }
  void AddFirstReport(const Moment& moment);
  void CheckState(const Moment& moment, std::int64_t timestamp_ns, SampleClock clock);
  void AddInterval(const Moment& moment, std::int64_t interval_ns);
  void AddLatency(std::int64_t latency_ns);
  /// No sample has come since the last one, or since the enable, until the timestamp or instant
  /// `until_ns`.
  void CheckSilence(const Moment& moment, std::int64_t until_ns);
  void CompareWithLastSpan() const;
  /// Of an enabled sensor.
  void EndSpan(const Moment& moment);

  static constexpr std::int64_t kLeastPeriodNs = 100'000;

  const SensorVela::SensorId sensor_;
  const std::int64_t start_ns_;
  Findings& findings_;
  ClockChecks clock_checks_{sensor_, findings_};

  std::uint64_t enables_ = 0;
  bool is_enabled_ = false;
  Moment last_enable_;
  Moment last_disable_;
  /// Since the last enable, also while disabled.
  std::uint64_t first_reports_ = 0;
  std::uint64_t samples_since_enable_ = 0;
  /// Of a period below which an interval is too short, and above which it is too long.
  std::int64_t fast_ns_ = 0;
  std::int64_t slow_ns_ = 0;

  Moment last_sample_;
  std::int64_t last_timestamp_ns_ = 0;
  SampleClock last_clock_ = SampleClock::kElapsedRealtime;

  Span span_;
  Span last_span_;
};

}  // namespace sensorvela::tools
