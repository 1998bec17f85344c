// Sample trains: a train is many samples of one sensor at regular intervals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <queue>
#include <string>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/run/event.h"

namespace sensorvela::replay {

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
    SensorVela::SensorId sensor;
    std::int64_t timestamp_ns;
    Instant arrival;
    /// The train's line in the trace. Its text is valid until the next call of `ForgetEnded`.
    TraceLine line;
  };

  /// The timestamp of the train's first sample is `start`.
  void Start(const SampleTrain& train, Instant start, TraceLine line);

  /// Drops all samples that are left.
  void Cut();

  /// Frees the lines of the trains that have ended.
  void ForgetEnded() { ended_.clear(); }

  /// Whether a sample arrives by `instant`.
  bool HasSampleBy(Instant instant) const;

  /// Returns the sample that arrives next. When several arrive together, returns that of the train
  /// that was started first. There must be a sample left.
  Sample TakeNext();

 private:
  struct Running {
    SampleTrain train;
    std::size_t line_number;
    std::string line_text;
    std::int64_t timestamp_ns;
    std::int64_t taken = 0;
  };
  /// A list, in which a train and its text stay where they are.
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
  Trains ended_;
  std::size_t started_ = 0;
};

}  // namespace sensorvela::replay
