#include "recorder/sample_lists.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "recorder/event_line.h"
#include "trace_format/words.h"

namespace sensorvela::recorder {
namespace {

constexpr std::size_t kMaxSamples = 4096;
constexpr std::size_t kMaxLists = 64;

}  // namespace

bool SampleLists::Add(const trace_format::Sample& sample) {
  const std::size_t position = Find(sample.sensor);
  if (samples_ == 0) {
    first_arrival_ns_ = sample.arrival_ns;
  } else if (samples_ == kMaxSamples || position == kMaxLists ||
             (sample.arrival_ns == last_arrival_ns_ && position < last_list_)) {
    return false;
  }
  if (position == used_) {
    if (used_ == lists_.size()) lists_.emplace_back();
    List& list = lists_[used_++];
    list.sensor = sample.sensor;
    list.codec = trace_format::SampleListCodec(first_arrival_ns_);
    list.text.clear();
  }
  lists_[position].codec.Append(sample, lists_[position].text);
  last_arrival_ns_ = sample.arrival_ns;
  last_list_ = position;
  ++samples_;
  return true;
}

void SampleLists::WriteTo(std::string& out) {
  EventLine line(first_arrival_ns_, trace_format::event::kSampleLists);
  line.Name(trace_format::field::kSensors).Open('[');
  for (std::size_t i = 0; i < used_; ++i) {
    line.Open('[').Value(std::int64_t{lists_[i].sensor.high});
    line.Value(std::int64_t{lists_[i].sensor.low}).Close(']');
  }
  line.Close(']').Name(trace_format::field::kLists).Open('[');
  for (std::size_t i = 0; i < used_; ++i) line.Value(std::string_view(lists_[i].text));
  out += line.Close(']').Finish();
  used_ = 0;
  samples_ = 0;
}

std::size_t SampleLists::Find(SensorVela::SensorId sensor) const {
  std::size_t i = 0;
  for (; i < used_; ++i) {
    const SensorVela::SensorId& known = lists_[i].sensor;
    if (known.high == sensor.high && known.low == sensor.low) break;
  }
  return i;
}

}  // namespace sensorvela::recorder
