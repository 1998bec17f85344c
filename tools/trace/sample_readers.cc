#include "tools/trace/sample_readers.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace_format/sample_list.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace field = trace_format::field;
using trace_format::kMaxTimeNs;
using trace_format::Sample;

namespace {

constexpr std::int64_t kMaxSamples = 1'000'000'000;
constexpr std::int64_t kHourNs = 3'600'000'000'000;
constexpr std::int64_t kDayNs = 24 * kHourNs;

constexpr std::string_view kExpectedList =
    "base-64 variable-length quantities, two for each sample, of instants that do not go back";

/// Needed because the product of two fields within their bounds can exceed 64 bits.
bool LastsTooLong(const SampleTrain& train) {
  const std::int64_t steps = train.count - 1;
  if (steps == 0) return false;
  if (train.interval_ns > kMaxTimeNs / steps) return true;
  const std::int64_t gaps = train.gap_every == 0 ? 0 : steps / train.gap_every;
  return gaps > 0 && train.gap_ns > (kMaxTimeNs - steps * train.interval_ns) / gaps;
}

/// Appends the samples of one list.
void AppendList(const JsonValue& list, const JsonValue& sensor, std::int64_t at_ns,
                std::vector<Sample>& samples) {
  std::string_view text = list.Text();
  auto half = sensor.AsList(2).begin();
  Sample sample = {};
  sample.sensor.high = half->Integer<std::uint32_t>();
  ++half;
  sample.sensor.low = half->Integer<std::int32_t>();
  for (trace_format::SampleListCodec codec(at_ns); !text.empty(); samples.push_back(sample)) {
    if (!codec.Take(text, sample)) list.Reject("is no list of samples", kExpectedList);
  }
}

}  // namespace

SampleTrain ReadSampleTrain(FieldReader& fields) {
  constexpr std::int64_t kAbsent = -1;
  SampleTrain train = {};
  train.sensor = fields.Sensor();
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

std::vector<Sample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns) {
  const JsonValue& sensors = fields.List(field::kSensors);
  const JsonValue& lists = fields.List(field::kLists);
  if (sensors.size != lists.size) {
    throw EventError(
        "the fields \"sensors\" and \"lists\" have different lengths: expected a list "
        "for each sensor");
  }
  std::vector<Sample> samples;
  auto sensor = sensors.begin();
  for (const JsonValue& list : lists) {
    AppendList(list, *sensor, at_ns, samples);
    ++sensor;
  }
  // By the arrivals, and where those are the same in the order of the lists.
  std::ranges::stable_sort(samples, {}, &Sample::arrival_ns);
  return samples;
}

}  // namespace sensorvela::tools
