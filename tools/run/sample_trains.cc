#include "tools/run/sample_trains.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace sensorvela::tools {

std::int64_t SampleTrain::DurationNs() const {
  const std::int64_t steps = count - 1;
  const std::int64_t gaps = gap_every == 0 ? 0 : steps / gap_every;
  return steps * interval_ns + gaps * gap_ns + latency_ns;
}

void SampleTrains::Start(const SampleTrain& train, Instant start,
                         std::shared_ptr<const EventInfo> event) {
  const auto running = running_.insert(running_.end(), {train, std::move(event), start.count()});
  turns_.push({start.count() + train.latency_ns, started_++, running});
}

void SampleTrains::Cut() {
  turns_ = {};
  running_.clear();
}

bool SampleTrains::HasSampleBy(Instant instant) const {
  return !turns_.empty() && turns_.top().arrival_ns <= instant.count();
}

SampleTrains::Sample SampleTrains::TakeNext() {
  ended_.clear();
  Turn turn = turns_.top();
  turns_.pop();
  Running& next = *turn.train;
  const SampleTrain& train = next.train;
  const Sample sample = {next.event, train.sensor, next.timestamp_ns, Instant(turn.arrival_ns)};
  if (++next.taken < train.count) {
    next.timestamp_ns += train.interval_ns;
    if (train.gap_every > 0 && next.taken % train.gap_every == 0) next.timestamp_ns += train.gap_ns;
    turn.arrival_ns = next.timestamp_ns + train.latency_ns;
    turns_.push(turn);
  } else {
    ended_.splice(ended_.end(), running_, turn.train);
  }
  return sample;
}

}  // namespace sensorvela::tools
