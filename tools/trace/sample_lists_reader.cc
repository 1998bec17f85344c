#include "tools/trace/sample_lists_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace_format/sample_list.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace field = trace_format::field;
using trace_format::Sample;

namespace {

constexpr std::string_view kExpectedList =
    "base-64 variable-length quantities, two for each sample, of instants that do not go back";

/// Appends the samples of one list; false if it is not as it must be.
bool AppendList(std::string_view text, SensorVela::SensorId sensor, std::int64_t at_ns,
                std::vector<Sample>& samples) {
  trace_format::SampleListCodec codec(at_ns);
  for (Sample sample = {sensor, 0, 0}; !text.empty(); samples.push_back(sample)) {
    if (!codec.Take(text, sample)) return false;
  }
  return true;
}

SensorVela::SensorId ReadSensor(const CheckedValue& value) {
  const auto halves = value.List(2);
  return {halves[0].Integer<std::uint32_t>(), halves[1].Integer<std::int32_t>()};
}

}  // namespace

std::vector<Sample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns) {
  const auto sensors = fields.List(field::kSensors);
  const auto lists = fields.List(field::kLists);
  if (sensors.size() != lists.size()) {
    throw EventError(
        "the fields \"sensors\" and \"lists\" have different lengths: expected a list "
        "for each sensor");
  }
  std::vector<Sample> samples;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    if (!AppendList(lists[i].Text(), ReadSensor(sensors[i]), at_ns, samples)) {
      lists[i].Reject("is no list of samples", kExpectedList);
    }
  }
  // By the arrivals, and where those are the same in the order of the lists.
  std::ranges::stable_sort(samples, {}, &Sample::arrival_ns);
  return samples;
}

}  // namespace sensorvela::tools
