// Sample trains: a train is many samples of one sensor at regular intervals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

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
  std::int64_t DurationNs() const {
    const std::int64_t steps = count - 1;
    const std::int64_t gaps = gap_every == 0 ? 0 : steps / gap_every;
    return steps * interval_ns + gaps * gap_ns + latency_ns;
  }
};

/// The running trains, merged: gives their samples in the order of arrival. When several arrive
/// together, that of the train that was started first is the next.
class SampleTrains {
 public:
  using Instant = simulated::VirtualTime::Instant;

  /// A train, at one of its samples.
  struct Running {
    SampleTrain train;
    /// The event that started it.
    std::shared_ptr<const EventInfo> event;
    std::int64_t timestamp_ns;
    /// The samples before this one.
    std::int64_t delivered = 0;

    Instant Arrival() const { return Instant(timestamp_ns + train.latency_ns); }
  };

  /// The timestamp of the train's first sample is `start`.
  void Start(const SampleTrain& train, Instant start, std::shared_ptr<const EventInfo> event) {
    const Running running = {train, std::move(event), start.count()};
    running_.try_emplace({running.Arrival(), started_++}, running);
  }

  /// Drops all samples that are left.
  void Cut() { running_.clear(); }

  /// The train whose sample arrives next; null if none arrives by `instant`. Valid until the next
  /// call of `Advance` or `Cut`.
  const Running* NextBy(Instant instant) const {
    if (running_.empty() || running_.begin()->first.first > instant) return nullptr;
    return &running_.begin()->second;
  }

  /// That train goes on to its next sample. There must be one.
  void Advance() {
    auto node = running_.extract(running_.begin());
    Running& running = node.mapped();
    const SampleTrain& train = running.train;
    if (++running.delivered == train.count) return;
    running.timestamp_ns += train.interval_ns;
    if (train.gap_every > 0 && running.delivered % train.gap_every == 0) {
      running.timestamp_ns += train.gap_ns;
    }
    node.key().first = running.Arrival();
    running_.insert(std::move(node));
  }

 private:
  /// By the arrival of the next sample, and then by the order in which they were started.
  std::map<std::pair<Instant, std::size_t>, Running> running_;
  std::size_t started_ = 0;
};

}  // namespace sensorvela::tools
