#include "tools/trace/sample_lists_reader.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/wrapping_arithmetic.h"

namespace sensorvela::replay {
namespace {

constexpr unsigned char kNoDigit = 0xFF;

/// The value of each digit of base 64, as in RFC 4648.
constexpr std::array<unsigned char, 256> kDigitValues = [] {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::array<unsigned char, 256> values;
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<unsigned char>(i);
  }
  return values;
}();

constexpr std::string_view kExpectedList =
    "base-64 variable-length quantities, two for each sample, of instants that do not go back";

/// Reads the numbers of a list.
class Quantities {
 public:
  explicit Quantities(std::string_view text) : text_(text) {}

  bool empty() const { return text_.empty(); }

  /// False if there is no whole quantity of 64 bits.
  bool Take(std::int64_t& value) {
    std::uint64_t bits = 0;
    for (unsigned shift = 0; shift < 64 && !text_.empty(); shift += 5) {
      const std::uint64_t digit = kDigitValues[static_cast<unsigned char>(text_.front())];
      if (digit == kNoDigit || (shift == 60 && digit > 15)) return false;
      text_.remove_prefix(1);
      bits |= (digit & 31U) << shift;
      if (digit >= 32) continue;
      value = static_cast<std::int64_t>(bits >> 1U) ^ -static_cast<std::int64_t>(bits & 1U);
      return true;
    }
    return false;
  }

 private:
  std::string_view text_;
};

/// Appends the samples of one list; false if it is not as it must be.
bool AppendList(std::string_view text, SensorVela::SensorId sensor, std::int64_t at_ns,
                std::vector<RecordedSample>& samples) {
  std::int64_t arrival_ns = at_ns;
  std::int64_t interval_ns = 0;
  std::int64_t latency_ns = 0;
  for (Quantities quantities(text); !quantities.empty();) {
    std::int64_t interval_change_ns = 0;
    std::int64_t latency_change_ns = 0;
    if (!quantities.Take(interval_change_ns) || !quantities.Take(latency_change_ns)) return false;
    interval_ns = WrappingAdd(interval_ns, interval_change_ns);
    latency_ns = WrappingAdd(latency_ns, latency_change_ns);
    if (interval_ns < 0 || interval_ns > kMaxTimeNs - arrival_ns) return false;
    arrival_ns += interval_ns;
    samples.push_back(
        {sensor, std::chrono::nanoseconds(arrival_ns), WrappingSubtract(arrival_ns, latency_ns)});
  }
  return true;
}

SensorVela::SensorId ReadSensor(const CheckedValue& value) {
  const auto halves = value.List(2);
  return {halves[0].Integer<std::uint32_t>(), halves[1].Integer<std::int32_t>()};
}

}  // namespace

std::vector<RecordedSample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns) {
  const auto sensors = fields.List("sensors");
  const auto lists = fields.List("lists");
  if (sensors.size() != lists.size()) {
    throw EventError(
        "the fields \"sensors\" and \"lists\" have different lengths: expected a list "
        "for each sensor");
  }
  std::vector<RecordedSample> samples;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    if (!AppendList(lists[i].Text(), ReadSensor(sensors[i]), at_ns, samples)) {
      lists[i].Reject("is no list of samples", kExpectedList);
    }
  }
  // By the arrivals, and where those are the same in the order of the lists.
  std::vector<std::size_t> order(samples.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&](std::size_t i) { return std::pair(samples[i].arrival, i); });
  std::vector<RecordedSample> merged;
  merged.reserve(samples.size());
  for (const std::size_t i : order) merged.push_back(samples[i]);
  return merged;
}

}  // namespace sensorvela::replay
