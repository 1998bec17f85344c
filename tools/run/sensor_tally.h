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

/// Counts from the atoms that reach the stats service. If the atom of an enable is dropped, the
/// next report replaces the one from before that enable, unless its count is smaller; then both are
/// added.
class SensorTally {
 public:
  void CountSample(SensorVela::SensorId sensor);

  /// Counts an atom that reached the stats service, which accepted or refused it. Only a sensor's
  /// changes of state matter. A refused disable reports no samples, but a refused enable still
  /// begins a stretch.
  void CountAtom(const SensorVela::VendorAtom& atom, bool is_taken);

  /// Every sensor that had a sample or an atom, by ascending identifier, its high half first.
  std::vector<SensorSummary> Summaries() const;

 private:
  struct Entry {
    std::uint64_t delivered = 0;
    /// The counts of the finished stretches; a stretch lasts from one enable to the next.
    ReportedSamples closed;
    /// The counts of the present stretch, from its last disable, which includes the earlier ones.
    ReportedSamples open;
  };

  std::map<std::pair<std::uint32_t, std::int32_t>, Entry> entries_;
};

}  // namespace sensorvela::replay
