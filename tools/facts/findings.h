// Collects what looks wrong in a run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/facts/finding.h"

namespace sensorvela::tools {

/// A moment of a run, for whoever looks for what is wrong.
struct Moment {
  simulated::VirtualTime::Instant at = {};
  /// How long the device has slept so far.
  std::chrono::nanoseconds asleep = {};
  /// The line of the event that happens.
  std::size_t line = 0;

  /// How long the device has been awake since then.
  std::chrono::nanoseconds AwakeSince(const Moment& earlier) const {
    return (at - earlier.at) - (asleep - earlier.asleep);
  }
};

/// Counts the findings of a kind about a sensor as one, with the first place. Keeps at most
/// `kMaxFindings` of them: those that come after are left out.
class Findings {
 public:
  static constexpr std::size_t kMaxFindings = 1000;

  using Sensor = std::optional<SensorVela::SensorId>;

  void Add(FindingKind kind, const Sensor& sensor, const Moment& moment, std::uint64_t count = 1);

  /// The finding's count is at least `count`.
  void Raise(FindingKind kind, const Sensor& sensor, const Moment& moment, std::uint64_t count);

  /// Adds to the finding, if it is there, what else there is to say.
  void Describe(FindingKind kind, const Sensor& sensor, const std::string& detail);

  /// In the order of their kinds, and then of the sensors.
  std::vector<Finding> All() const;

 private:
  /// None if there are too many.
  Finding* At(FindingKind kind, const Sensor& sensor, const Moment& moment);

  struct Order {
    bool operator()(const std::pair<FindingKind, Sensor>& a,
                    const std::pair<FindingKind, Sensor>& b) const;
  };

  std::map<std::pair<FindingKind, Sensor>, Finding, Order> findings_;
};

}  // namespace sensorvela::tools
