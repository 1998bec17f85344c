// The text in which a recording has the samples of one sensor.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/wrapping_arithmetic.h"
#include "trace_format/sample.h"
#include "trace_format/words.h"

namespace sensorvela::trace_format {

/// Base 64 as in RFC 4648.
inline constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline constexpr unsigned char kNoDigit = 0xFF;
inline constexpr std::array<unsigned char, 256> kDigitValues = [] {
  std::array<unsigned char, 256> values;
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<unsigned char>(i);
  }
  return values;
}();

/// Appends a base-64 variable-length quantity: zigzag, five bits in a digit, the lowest first, 32
/// more in each digit but the last.
inline void AppendQuantity(std::int64_t value, std::string& text) {
  const auto bits = static_cast<std::uint64_t>(value);
  std::uint64_t rest =
      ((bits & (~std::uint64_t{0} >> 1U)) << 1U) ^ (value < 0 ? ~std::uint64_t{0} : 0);
  for (; rest >= 32; rest >>= 5U) text += kDigits[static_cast<std::size_t>(32 + (rest & 31U))];
  text += kDigits[static_cast<std::size_t>(rest)];
}

/// Takes a quantity from the beginning of `text`. False if there is no whole one of 64 bits.
inline bool TakeQuantity(std::string_view& text, std::int64_t& value) {
  std::uint64_t bits = 0;
  for (unsigned shift = 0; shift < 64 && !text.empty(); shift += 5) {
    const std::uint64_t digit = kDigitValues[static_cast<unsigned char>(text.front())];
    if (digit == kNoDigit || (shift == 60 && digit > 15)) return false;
    text.remove_prefix(1);
    bits |= (digit & 31U) << shift;
    if (digit >= 32) continue;
    value = static_cast<std::int64_t>(bits >> 1U) ^ -static_cast<std::int64_t>(bits & 1U);
    return true;
  }
  return false;
}

/// Writes or reads the samples of one list, each as two quantities: by how much the interval since
/// the list's previous sample (for the first, since the event's instant) differs from the interval
/// before it, and by how much the latency differs from the previous one. Both begin at 0 and wrap.
class SampleListCodec {
 public:
  /// `at_ns` is the event's instant.
  explicit SampleListCodec(std::int64_t at_ns) : arrival_ns_(at_ns) {}

  void Append(const Sample& sample, std::string& text) {
    const std::int64_t interval_ns = WrappingSubtract(sample.arrival_ns, arrival_ns_);
    const std::int64_t latency_ns = WrappingSubtract(sample.arrival_ns, sample.timestamp_ns);
    AppendQuantity(WrappingSubtract(interval_ns, interval_ns_), text);
    AppendQuantity(WrappingSubtract(latency_ns, latency_ns_), text);
    arrival_ns_ = sample.arrival_ns;
    interval_ns_ = interval_ns;
    latency_ns_ = latency_ns;
  }

  /// Takes a sample's times from the beginning of `text`. False if there is no sample, or one that
  /// arrives before the previous one or too late for a trace.
  bool Take(std::string_view& text, Sample& sample) {
    std::int64_t interval_change_ns = 0;
    std::int64_t latency_change_ns = 0;
    if (!TakeQuantity(text, interval_change_ns) || !TakeQuantity(text, latency_change_ns)) {
      return false;
    }
    interval_ns_ = WrappingAdd(interval_ns_, interval_change_ns);
    latency_ns_ = WrappingAdd(latency_ns_, latency_change_ns);
    if (interval_ns_ < 0 || interval_ns_ > kMaxTimeNs - arrival_ns_) return false;
    arrival_ns_ += interval_ns_;
    sample.arrival_ns = arrival_ns_;
    sample.timestamp_ns = WrappingSubtract(arrival_ns_, latency_ns_);
    return true;
  }

 private:
  std::int64_t arrival_ns_;
  std::int64_t interval_ns_ = 0;
  std::int64_t latency_ns_ = 0;
};

}  // namespace sensorvela::trace_format
