#include "tools/trace/checked_value.h"

#include <algorithm>
#include <cmath>

#include "tools/text/printable_text.h"

namespace sensorvela::replay {
namespace {

using nlohmann::json;

bool FitsInt64(const json& number) {
  return !number.is_number_unsigned() ||
         number.get<std::uint64_t>() <=
             static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

}  // namespace

std::string IntegerRange::Description() const {
  return "an integer from " + std::to_string(min) + " to " + std::to_string(max);
}

std::int64_t CheckedValue::IntegerIn(IntegerRange range) const {
  if (!value_->is_number()) RejectType(range.Description());
  // The parser reads integers of more than 64 bits as floating-point numbers.
  if (value_->is_number_float()) Reject("is not a plain 64-bit integer", range.Description());
  if (FitsInt64(*value_)) {
    const auto number = value_->get<std::int64_t>();
    if (number >= range.min && number <= range.max) return number;
  }
  Reject("is " + value_->dump(), range.Description());
}

float CheckedValue::Float() const {
  using Limits = std::numeric_limits<float>;
  if (value_->is_string()) {
    const std::string text = value_->get<std::string>();
    if (text == "NaN") return Limits::quiet_NaN();
    if (text == "Infinity") return Limits::infinity();
    if (text == "-Infinity") return -Limits::infinity();
    Reject("is " + Quoted(text), kFloatDescription);
  }
  if (!value_->is_number()) RejectType(kFloatDescription);
  const auto number = value_->get<double>();
  // The largest float is printed rounded up, as 3.4028235e+38. What rounds to it is read as it.
  constexpr double kRoundsToInfinity = 3.4028235677973366e38;
  if (std::abs(number) >= kRoundsToInfinity) Reject("is " + value_->dump(), kFloatDescription);
  return static_cast<float>(std::clamp(number, double{Limits::lowest()}, double{Limits::max()}));
}

bool CheckedValue::Bool() const {
  if (!value_->is_boolean()) RejectType("true or false");
  return value_->get<bool>();
}

std::string CheckedValue::Text() const {
  if (!value_->is_string()) RejectType("a string");
  return value_->get<std::string>();
}

const json& CheckedValue::Object() const {
  if (!value_->is_object()) RejectType("an object");
  return *value_;
}

std::vector<CheckedValue> CheckedValue::List(std::optional<std::size_t> count) const {
  const std::string expected =
      count ? "an array of " + std::to_string(*count) + " elements" : "an array";
  if (!value_->is_array()) RejectType(expected);
  if (count && value_->size() != *count) {
    Reject("has " + std::to_string(value_->size()) + " elements", expected);
  }
  std::vector<CheckedValue> elements;
  elements.reserve(value_->size());
  for (const json& element : *value_) {
    elements.emplace_back(element, name_ + '[' + std::to_string(elements.size()) + ']');
  }
  return elements;
}

void CheckedValue::Reject(const std::string& is_wrong, std::string_view expected) const {
  throw EventError("field " + Quoted(name_) + ' ' + is_wrong + ": expected " +
                   std::string(expected));
}

void CheckedValue::RejectType(std::string_view expected) const {
  Reject("has type " + std::string(value_->type_name()), expected);
}

}  // namespace sensorvela::replay
