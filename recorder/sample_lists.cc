#include "recorder/sample_lists.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/wrapping_arithmetic.h"
#include "recorder/event_line.h"

namespace sensorvela::recorder {
namespace {

constexpr std::size_t kMaxSamples = 4096;
constexpr std::size_t kMaxLists = 64;

/// Base 64 as in RFC 4648.
constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void AppendQuantity(std::string& out, std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  std::uint64_t rest =
      ((bits & (~std::uint64_t{0} >> 1U)) << 1U) ^ (value < 0 ? ~std::uint64_t{0} : 0);
  while (rest >= 32) {
    out += kDigits[static_cast<std::size_t>(32 + (rest & 31U))];
    rest >>= 5U;
  }
  out += kDigits[static_cast<std::size_t>(rest)];
}

}  // namespace

bool SampleLists::Add(const Sample& sample) {
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
    list.arrival_ns = first_arrival_ns_;
    list.interval_ns = 0;
    list.latency_ns = 0;
    list.text.clear();
  }
  List& list = lists_[position];
  const std::int64_t interval_ns = WrappingSubtract(sample.arrival_ns, list.arrival_ns);
  const std::int64_t latency_ns = WrappingSubtract(sample.arrival_ns, sample.timestamp_ns);
  AppendQuantity(list.text, WrappingSubtract(interval_ns, list.interval_ns));
  AppendQuantity(list.text, WrappingSubtract(latency_ns, list.latency_ns));
  list.arrival_ns = sample.arrival_ns;
  list.interval_ns = interval_ns;
  list.latency_ns = latency_ns;
  last_arrival_ns_ = sample.arrival_ns;
  last_list_ = position;
  ++samples_;
  return true;
}

void SampleLists::WriteTo(std::string& out) {
  EventLine line(first_arrival_ns_, "sample_lists");
  line.Name("sensors").Open('[');
  for (std::size_t i = 0; i < used_; ++i) {
    line.Open('[').Value(std::int64_t{lists_[i].sensor.high});
    line.Value(std::int64_t{lists_[i].sensor.low}).Close(']');
  }
  line.Close(']').Name("lists").Open('[');
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
