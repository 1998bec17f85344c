#include "recorder/event_line.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "trace_format/utf8.h"
#include "trace_format/words.h"

namespace sensorvela::recorder {

namespace field = trace_format::field;

namespace {

constexpr int kFloatDigits = 9;  // As many as tell all floats apart.

void AppendQuoted(std::string& out, std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '"';
  while (!text.empty()) {
    const auto character = trace_format::FirstCharacter(text);
    const std::size_t bytes = character ? character->bytes : 1;
    const auto first = static_cast<unsigned char>(text[0]);
    if (!character) {
      out += "\\ufffd";
    } else if (first < ' ') {
      out += "\\u00";
      out += {kHex[first / 16U], kHex[first % 16U]};
    } else {
      if (first == '"' || first == '\\') out += '\\';
      out += text.substr(0, bytes);
    }
    text.remove_prefix(bytes);
  }
  out += '"';
}

/// The bits of a NaN count, because the engine passes them on.
std::string NanText(float nan) {
  const auto bits = std::bit_cast<std::uint32_t>(nan);
  if (bits == std::bit_cast<std::uint32_t>(std::numeric_limits<float>::quiet_NaN())) return "NaN";
  std::array<char, 8> digits;  // The highest is not zero.
  std::to_chars(digits.data(), digits.data() + digits.size(), bits, 16);
  return "NaN(0x" + std::string(digits.data(), digits.size()) + ")";
}

}  // namespace

EventLine::EventLine(std::int64_t at_ns, std::string_view kind) {
  Open('{').Integer(field::kAtNs, at_ns).Text(field::kEvent, kind);
}

EventLine& EventLine::Integer(std::string_view name, std::int64_t value) {
  return Name(name).Value(value);
}

EventLine& EventLine::Text(std::string_view name, std::string_view value) {
  return Name(name).Value(value);
}

EventLine& EventLine::Sensor(SensorVela::SensorId sensor) {
  return Integer(field::kSensorHigh, sensor.high).Integer(field::kSensorLow, sensor.low);
}

EventLine& EventLine::Name(std::string_view name) {
  Separate();
  AppendQuoted(text_, name);
  text_ += ':';
  return *this;
}

EventLine& EventLine::Open(char open) {
  Separate();
  text_ += open;
  return *this;
}

EventLine& EventLine::Close(char close) {
  text_ += close;
  return *this;
}

EventLine& EventLine::Value(std::int64_t value) {
  Separate();
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text_.append(digits.data(), end.ptr);
  return *this;
}

EventLine& EventLine::Value(float value) {
  if (std::isnan(value)) return Value(std::string_view(NanText(value)));
  if (std::isinf(value)) return Value(std::string_view(value > 0 ? "Infinity" : "-Infinity"));
  Separate();
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::scientific, kFloatDigits - 1);
  text_.append(digits.data(), end.ptr);
  return *this;
}

EventLine& EventLine::Value(bool value) {
  Separate();
  text_ += value ? "true" : "false";
  return *this;
}

EventLine& EventLine::Value(std::string_view value) {
  Separate();
  // A text of any size costs the host no more memory than a line.
  AppendQuoted(text_, value.substr(0, IsTooLong() ? 0 : kMaxLineBytes));
  return *this;
}

EventLine& EventLine::Value(std::span<const std::int32_t> values) {
  Open('[');
  for (const std::int32_t value : values) Value(value);
  return Close(']');
}

const std::string& EventLine::Finish() {
  text_ += "}\n";
  return text_;
}

void EventLine::Separate() {
  constexpr std::string_view kNoCommaAfter = "{[:";
  if (!text_.empty() && kNoCommaAfter.find(text_.back()) == std::string_view::npos) text_ += ',';
}

}  // namespace sensorvela::recorder
