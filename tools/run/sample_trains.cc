#include "tools/run/sample_trains.h"

namespace sensorvela::replay {

std::int64_t SampleTrain::DurationNs() const {
  const std::int64_t steps = count - 1;
  const std::int64_t gaps = gap_every == 0 ? 0 : steps / gap_every;
  return steps * interval_ns + gaps * gap_ns + latency_ns;
}

void SampleTrains::Start(const SampleTrain& train, Instant start, TraceLine line) {
  const auto text = running_lines_.emplace(running_lines_.end(), line.text);
  running_.push({train, line.number, text, started_++, start.count(), 0});
}

void SampleTrains::Cut() {
  running_ = {};
  ended_lines_.splice(ended_lines_.end(), running_lines_);
}

bool SampleTrains::HasSampleBy(Instant instant) const {
  return !running_.empty() && running_.top().arrival_ns() <= instant.count();
}

SampleTrains::Sample SampleTrains::TakeNext() {
  Running next = running_.top();
  running_.pop();
  const Sample sample = {next.train.sensor,
                         next.timestamp_ns,
                         Instant(next.arrival_ns()),
                         {next.line_number, *next.line_text}};
  const SampleTrain& train = next.train;
  if (++next.taken < train.count) {
    next.timestamp_ns += train.interval_ns;
    if (train.gap_every > 0 && next.taken % train.gap_every == 0) next.timestamp_ns += train.gap_ns;
    running_.push(next);
  } else {
    ended_lines_.splice(ended_lines_.end(), running_lines_, next.line_text);
  }
  return sample;
}

}  // namespace sensorvela::replay
