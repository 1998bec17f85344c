// Counts a run's samples for each sensor.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::replay {

/// The engine's own counts, as the stats service received them.
struct ReportedSamples {
  std::uint64_t samples = 0;
  std::uint64_t late = 0;
  /// Counts by latency: up to 2.5 ms, 5 ms, 10 ms, 20 ms, and more.
  std::array<std::uint64_t, 5> bands = {};
};

struct SensorSummary {
  SensorVela::SensorId sensor;
  /// Samples that the trace delivered to the engine.
  std::uint64_t delivered;
  ReportedSamples reported;

  /// Samples that are in no report that the stats service accepted.
  std::uint64_t NotReported() const {
    return delivered > reported.samples ? delivered - reported.samples : 0;
  }
};

/// Counts samples by stretches: a stretch of a sensor lasts from one enable to the next.
class SensorTally {
 public:
  struct Stretch {
    SensorVela::SensorId sensor;
    /// How many enables there have been before it.
    std::uint64_t number;
  };

  void CountSample(SensorVela::SensorId sensor) { ++EntryOf(sensor).delivered; }

  /// The sensor is enabled.
  void BeginStretch(SensorVela::SensorId sensor) { ++EntryOf(sensor).stretch; }

  Stretch PresentStretch(SensorVela::SensorId sensor) { return {sensor, EntryOf(sensor).stretch}; }

  /// The stats service has accepted the engine's atom of a disable in that stretch. Atoms come in
  /// the order in which they were queued.
  void CountReport(const Stretch& stretch, const SensorVela::VendorAtom& disable);

  /// Every sensor that had a sample, an enable or a disable, by ascending identifier, its high half
  /// first.
  std::vector<SensorSummary> Summaries() const;

 private:
  struct Entry {
    std::uint64_t delivered = 0;
    /// The number of the present stretch.
    std::uint64_t stretch = 0;
    /// The stretch of the last report, and its counts: a report has all of its stretch so far.
    std::uint64_t last_reported_stretch = 0;
    ReportedSamples last;
    /// The counts of the stretches before that one.
    ReportedSamples before;
  };

  Entry& EntryOf(SensorVela::SensorId sensor) { return entries_[{sensor.high, sensor.low}]; }

  std::map<std::pair<std::uint32_t, std::int32_t>, Entry> entries_;
};

}  // namespace sensorvela::replay
