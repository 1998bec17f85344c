#include "tools/trace/sample_train_reader.h"

#include <cstdint>
#include <string>

#include "trace_format/words.h"

namespace sensorvela::tools {

using trace_format::kMaxTimeNs;

namespace {

constexpr std::int64_t kMaxSamples = 1'000'000'000;
constexpr std::int64_t kHourNs = 3'600'000'000'000;
constexpr std::int64_t kDayNs = 24 * kHourNs;

/// Needed because the product of two fields within their bounds can exceed 64 bits.
bool LastsTooLong(const SampleTrain& train) {
  const std::int64_t steps = train.count - 1;
  if (steps == 0) return false;
  if (train.interval_ns > kMaxTimeNs / steps) return true;
  const std::int64_t gaps = train.gap_every == 0 ? 0 : steps / train.gap_every;
  return gaps > 0 && train.gap_ns > (kMaxTimeNs - steps * train.interval_ns) / gaps;
}

}  // namespace

SampleTrain ReadSampleTrain(FieldReader& fields, SensorVela::SensorId sensor) {
  constexpr std::int64_t kAbsent = -1;
  SampleTrain train = {};
  train.sensor = sensor;
  train.count = fields.Integer<std::int64_t>("count", 1, kMaxSamples);
  train.interval_ns = fields.Integer<std::int64_t>("interval_ns", 0, kDayNs);
  train.latency_ns = fields.Integer<std::int64_t>("latency_ns", 0, kHourNs);
  const auto gap_every = fields.OptionalInteger<std::int64_t>("gap_every", kAbsent, 1, kMaxSamples);
  const auto gap_ns = fields.OptionalInteger<std::int64_t>("gap_ns", kAbsent, 0, kDayNs);
  if ((gap_every == kAbsent) != (gap_ns == kAbsent)) {
    throw EventError("one of gap_every and gap_ns without the other: expected both or neither");
  }
  if (gap_every != kAbsent) {
    train.gap_every = gap_every;
    train.gap_ns = gap_ns;
  }
  if (LastsTooLong(train)) {
    throw EventError("a train of samples that lasts too long: expected at most " +
                     std::to_string(kMaxTimeNs) + " ns from its first sample to its last");
  }
  return train;
}

}  // namespace sensorvela::tools
