// Looks for timestamps of another clock than elapsed realtime.
#pragma once

#include <cstdint>
#include <optional>

#include <sensorvela/engine/sensor_vela.h>

#include "engine/wrapping_arithmetic.h"
#include "tools/facts/findings.h"

namespace sensorvela::tools {

/// The clock that a timestamp seems to be of.
enum class SampleClock : std::uint8_t {
  kElapsedRealtime,
  kWall,
  kMonotonic,
  kMicroseconds,
  kMilliseconds,
  /// Its latency is below -1 ms.
  kAhead,
  /// Its latency is above 1 s.
  kBehind,
};

/// Of one sensor. Judges stretches of samples, not single ones: after a sleep and in a batch
/// healthy samples are late, too, but not by the same time for long.
class ClockChecks {
 public:
  /// `findings` must outlive the object.
  ClockChecks(SensorVela::SensorId sensor, Findings& findings)
      : sensor_(sensor), findings_(findings) {}

  SampleClock Sample(const Moment& moment, std::int64_t timestamp_ns) {
    const std::int64_t latency_ns = WrappingSubtract<std::int64_t>(moment.at.count(), timestamp_ns);
    const bool is_plausible = latency_ns >= -kToleranceNs && latency_ns <= kPlausibleNs;
    if (is_plausible && !stretch_) return SampleClock::kElapsedRealtime;
    const SampleClock clock =
        is_plausible ? SampleClock::kElapsedRealtime : ClockOf(moment, timestamp_ns, latency_ns);
    AddToStretch(clock, moment, latency_ns);
    return clock;
  }

  /// The run ends.
  void End() { EndStretch(); }

 private:
  static constexpr std::int64_t kToleranceNs = 1'000'000;
  static constexpr std::int64_t kPlausibleNs = 100'000'000;

  /// Samples of one clock, one after the other.
  struct Stretch {
    SampleClock clock;
    std::int64_t latency_ns;
    Moment first;
    Moment last;
    std::uint64_t samples;
  };

  static SampleClock ClockOf(const Moment& moment, std::int64_t timestamp_ns,
                             std::int64_t latency_ns);
  void AddToStretch(SampleClock clock, const Moment& moment, std::int64_t latency_ns);
  void EndStretch();
  /// None if there is nothing to say about it.
  static std::optional<FindingKind> KindOf(const Stretch& stretch);

  const SensorVela::SensorId sensor_;
  Findings& findings_;
  std::optional<Stretch> stretch_;
};

}  // namespace sensorvela::tools
