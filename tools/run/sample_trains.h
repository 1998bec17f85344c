// Sample trains: a train is many samples of one sensor at regular intervals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <queue>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/facts/cause.h"

namespace sensorvela::tools {

struct SampleTrain {
  SensorVela::SensorId sensor;
  std::int64_t count;
  /// From one sample's timestamp to the next one's.
  std::int64_t interval_ns;
  /// From a sample's timestamp to its arrival.
  std::int64_t latency_ns;
  /// After every `gap_every` samples the next one is `gap_ns` later than without a gap; 0 for
  /// never.
  std::int64_t gap_every;
  std::int64_t gap_ns;

  /// From the first sample's timestamp to the last one's arrival.
  std::int64_t DurationNs() const;
};

/// The running trains, merged: returns their samples in the order of arrival.
class SampleTrains {
 public:
  using Instant = simulated::VirtualTime::Instant;

  struct Sample {
    /// The event that started the train. Valid until the next call of `TakeNext` or `Cut`.
    const std::shared_ptr<const EventInfo>& event;
    SensorVela::SensorId sensor;
    std::int64_t timestamp_ns;
    Instant arrival;
  };

  /// The timestamp of the train's first sample is `start`.
  void Start(const SampleTrain& train, Instant start, std::shared_ptr<const EventInfo> event);

  /// Drops all samples that are left.
  void Cut();

  /// Whether a sample arrives by `instant`.
  bool HasSampleBy(Instant instant) const;

  /// Returns the sample that arrives next. When several arrive together, returns that of the train
  /// that was started first. There must be a sample left.
  Sample TakeNext();

 private:
  struct Running {
    SampleTrain train;
    std::shared_ptr<const EventInfo> event;
    std::int64_t timestamp_ns;
    std::int64_t taken = 0;
  };
  /// A list, in which a train stays where it is.
  using Trains = std::list<Running>;

  /// A train's next sample.
  struct Turn {
    std::int64_t arrival_ns;
    std::size_t order;
    Trains::iterator train;

    bool operator>(const Turn& other) const {
      if (arrival_ns != other.arrival_ns) return arrival_ns > other.arrival_ns;
      return order > other.order;
    }
  };

  std::priority_queue<Turn, std::vector<Turn>, std::greater<>> turns_;
  Trains running_;
  /// The train whose last sample was taken last.
  Trains ended_;
  std::size_t started_ = 0;
};

}  // namespace sensorvela::tools
