// What a run's samples came to, sensor by sensor.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::replay {

/// The engine's own counts, as the stats service got them.
struct ReportedSamples {
  std::uint64_t samples = 0;
  std::uint64_t late = 0;
  /// By latency: up to 2.5 ms, 5 ms, 10 ms, 20 ms, and more.
  std::array<std::uint64_t, 5> bands = {};
};

struct SensorSummary {
  SensorVela::SensorId sensor;
  /// Samples that the trace delivered to the engine.
  std::uint64_t delivered;
  ReportedSamples reported;

  /// Samples that are in no report that the stats service took.
  std::uint64_t NotReported() const {
    return delivered > reported.samples ? delivered - reported.samples : 0;
  }
};

/// Goes by the atoms that reach the stats service. An enable that is dropped on the way joins the
/// stretches before and after it, unless the later one's report is the smaller.
class SensorTally {
 public:
  void CountSample(SensorVela::SensorId sensor);

  /// Takes note of an atom that reached the stats service, which took it or refused it. Only a
  /// sensor's changes of state matter; a refused report reports nothing, but a refused enable still
  /// was one.
  void CountAtom(const SensorVela::VendorAtom& atom, bool is_taken);

  /// By ascending identifier, its high half first: every sensor that had a sample or an atom.
  std::vector<SensorSummary> Summaries() const;

 private:
  struct Entry {
    std::uint64_t delivered = 0;
    /// Of the stretches from one enable to the next that are over.
    ReportedSamples closed;
    /// Of the stretch under way: what its last disable said, which includes those before.
    ReportedSamples open;
  };

  std::map<std::pair<std::uint32_t, std::int32_t>, Entry> entries_;
};

}  // namespace sensorvela::replay
