#include "recorder/event_line.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace sensorvela::recorder {
namespace {

constexpr int kFloatDigits = 9;  // As many as tell all floats apart.

/// The length of the UTF-8 character that `text` begins with; 0 if it begins with none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  // No overlong forms, no surrogates, nothing beyond U+10FFFF.
  if (first >= 0xC2 && first <= 0xDF) return continues(1) ? 2 : 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const bool is_legal = (first != 0xE0 || byte(1) >= 0xA0) && (first != 0xED || byte(1) <= 0x9F);
    return is_legal && continues(1) && continues(2) ? 3 : 0;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const bool is_legal = (first != 0xF0 || byte(1) >= 0x90) && (first != 0xF4 || byte(1) <= 0x8F);
    return is_legal && continues(1) && continues(2) && continues(3) ? 4 : 0;
  }
  return 0;
}

void AppendQuoted(std::string& out, std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '"';
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    const auto first = static_cast<unsigned char>(text[0]);
    if (length == 0) {
      out += "\\ufffd";
    } else if (first < ' ') {
      out += "\\u00";
      out += {kHex[first / 16U], kHex[first % 16U]};
    } else {
      if (first == '"' || first == '\\') out += '\\';
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
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
  Open('{').Integer("at_ns", at_ns).Text("event", kind);
}

EventLine& EventLine::Integer(std::string_view name, std::int64_t value) {
  return Name(name).Value(value);
}

EventLine& EventLine::Float(std::string_view name, float value) { return Name(name).Value(value); }

EventLine& EventLine::Text(std::string_view name, std::string_view value) {
  return Name(name).Value(value);
}

EventLine& EventLine::Sensor(SensorVela::SensorId sensor) {
  return Integer("sensor_high", sensor.high).Integer("sensor_low", sensor.low);
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
  AppendQuoted(text_, value);
  return *this;
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
