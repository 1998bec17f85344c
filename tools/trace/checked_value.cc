#include "tools/trace/checked_value.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {
namespace {

using Type = JsonValue::Type;

bool IsNumber(const JsonValue& value) { return value.TypeName() == "number"; }

double ToDouble(const JsonValue& number) {
  if (number.type == Type::kFloat) return number.number;
  if (number.type == Type::kInteger) return static_cast<double>(number.integer);
  return static_cast<double>(static_cast<std::uint64_t>(number.integer));
}

/// The NaN that a text like "NaN(0x7fc00001)" names by its bits; none for any other text.
std::optional<float> NanOfBits(std::string_view text) {
  constexpr std::string_view kBegin = "NaN(0x";
  constexpr std::size_t kDigits = 8;
  if (!text.starts_with(kBegin) || text.size() != kBegin.size() + kDigits + 1 ||
      text.back() != ')') {
    return std::nullopt;
  }
  const char* const first = text.data() + kBegin.size();
  std::uint32_t bits = 0;
  if (std::from_chars(first, first + kDigits, bits, 16).ptr != first + kDigits) return std::nullopt;
  const auto number = std::bit_cast<float>(bits);
  return std::isnan(number) ? std::optional(number) : std::nullopt;
}

std::string NumberText(const JsonValue& number) {
  if (number.type == Type::kFloat) return nlohmann::json(number.number).dump();
  if (number.type == Type::kInteger) return std::to_string(number.integer);
  return std::to_string(static_cast<std::uint64_t>(number.integer));
}

}  // namespace

std::string IntegerRange::Description() const {
  return "an integer from " + std::to_string(min) + " to " + std::to_string(max);
}

std::string CheckedValue::name() const {
  std::string name;
  for (const JsonValue* outer = line_; outer != value_;) {
    std::size_t position = 0;
    const JsonValue* inner = outer->begin();
    for (; inner->next() <= value_; inner = inner->next()) ++position;
    if (outer->type == Type::kArray) {
      name += '[' + std::to_string(position) + ']';
    } else {
      name += (name.empty() ? "" : ".") + std::string(inner->key);
    }
    outer = inner;
  }
  return name;
}

std::int64_t CheckedValue::IntegerIn(IntegerRange range) const {
  if (value_->type == Type::kInteger && value_->integer >= range.min &&
      value_->integer <= range.max) {
    return value_->integer;
  }
  if (!IsNumber(*value_)) RejectType(range.Description());
  if (value_->type == Type::kFloat) Reject("is not a plain 64-bit integer", range.Description());
  Reject("is " + NumberText(*value_), range.Description());
}

float CheckedValue::Float() const {
  using Limits = std::numeric_limits<float>;
  if (value_->type == Type::kString) {
    const std::string_view text = value_->text;
    if (text == "NaN") return Limits::quiet_NaN();
    if (text == "Infinity") return Limits::infinity();
    if (text == "-Infinity") return -Limits::infinity();
    if (const auto nan = NanOfBits(text)) return *nan;
    Reject("is " + Quoted(text), kFloatDescription);
  }
  if (!IsNumber(*value_)) RejectType(kFloatDescription);
  const double number = ToDouble(*value_);
  // The largest float is printed rounded up, as 3.4028235e+38. What rounds to it is read as it.
  constexpr double kRoundsToInfinity = 3.4028235677973366e38;
  if (std::abs(number) >= kRoundsToInfinity) Reject("is " + NumberText(*value_), kFloatDescription);
  return NearestFloat(number);
}

bool CheckedValue::Bool() const {
  if (value_->type != Type::kBool) RejectType("true or false");
  return value_->integer != 0;
}

std::string CheckedValue::Text() const {
  if (value_->type != Type::kString) RejectType("a string");
  return std::string(value_->text);
}

const JsonValue& CheckedValue::Object() const {
  if (value_->type != Type::kObject) RejectType("an object");
  return *value_;
}

std::vector<CheckedValue> CheckedValue::List(std::optional<std::size_t> count) const {
  const auto expected = [&] {
    return count ? "an array of " + std::to_string(*count) + " elements" : "an array";
  };
  if (value_->type != Type::kArray) RejectType(expected());
  if (count && value_->size != *count) {
    Reject("has " + std::to_string(value_->size) + " elements", expected());
  }
  std::vector<CheckedValue> elements;
  elements.reserve(value_->size);
  for (const JsonValue* element = value_->begin(); element != value_->end();
       element = element->next()) {
    elements.emplace_back(*element, *line_);
  }
  return elements;
}

void CheckedValue::Reject(const std::string& is_wrong, std::string_view expected) const {
  throw EventError("field " + Quoted(name()) + ' ' + is_wrong + ": expected " +
                   std::string(expected));
}

void CheckedValue::RejectType(std::string_view expected) const {
  Reject("has type " + std::string(value_->TypeName()), expected);
}

}  // namespace sensorvela::tools
