#include "tools/trace/json_value.h"

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
#include <type_traits>
#include <variant>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {
namespace {

constexpr std::string_view kTypeNames[] = {"null",   "boolean", "number", "number",
                                           "number", "string",  "array",  "object"};
static_assert(std::size(kTypeNames) == std::variant_size_v<JsonValue::Content>);

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

/// The number in the content, if it is one.
std::optional<nlohmann::json> NumberIn(const JsonValue::Content& content) {
  return std::visit(
      []<typename Type>(const Type& value) -> std::optional<nlohmann::json> {
        if constexpr (std::is_arithmetic_v<Type> && !std::is_same_v<Type, bool>) return value;
        return std::nullopt;
      },
      content);
}

}  // namespace

std::string IntegerRange::Description() const {
  return "an integer from " + std::to_string(min) + " to " + std::to_string(max);
}

const JsonValue* JsonValue::Find(std::string_view name) const {
  for (const JsonValue& field : *this) {
    if (field.key == name) return &field;
  }
  return nullptr;
}

std::int64_t JsonValue::IntegerIn(IntegerRange range) const {
  const auto* const integer = std::get_if<std::int64_t>(&content);
  if (integer != nullptr && *integer >= range.min && *integer <= range.max) return *integer;
  const auto number = NumberIn(content);
  if (!number) RejectType(range.Description());
  if (Is<double>()) Reject("is not a plain 64-bit integer", range.Description());
  Reject("is " + number->dump(), range.Description());
}

float JsonValue::Float() const {
  using Limits = std::numeric_limits<float>;
  if (Is<std::string_view>()) {
    const std::string_view text = Text();
    if (text == "NaN") return Limits::quiet_NaN();
    if (text == "Infinity") return Limits::infinity();
    if (text == "-Infinity") return -Limits::infinity();
    if (const auto nan = NanOfBits(text)) return *nan;
    Reject("is " + Quoted(text), kFloatDescription);
  }
  const auto number = NumberIn(content);
  if (!number) RejectType(kFloatDescription);
  // The largest float is printed rounded up, as 3.4028235e+38. What rounds to it is read as it.
  constexpr double kRoundsToInfinity = 3.4028235677973366e38;
  if (std::abs(number->get<double>()) >= kRoundsToInfinity) {
    Reject("is " + number->dump(), kFloatDescription);
  }
  return static_cast<float>(number->get<double>());
}

bool JsonValue::Bool() const {
  if (!Is<bool>()) RejectType("true or false");
  return std::get<bool>(content);
}

std::string_view JsonValue::Text() const {
  if (!Is<std::string_view>()) RejectType("a string");
  return std::get<std::string_view>(content);
}

const JsonValue& JsonValue::AsObject() const {
  if (!Is<Object>()) RejectType("an object");
  return *this;
}

const JsonValue& JsonValue::AsList(std::optional<std::size_t> count) const {
  if (Is<Array>() && size == count.value_or(size)) return *this;
  const std::string expected =
      count ? "an array of " + std::to_string(*count) + " elements" : "an array";
  if (!Is<Array>()) RejectType(expected);
  Reject("has " + std::to_string(size) + " elements", expected);
}

void JsonValue::Reject(const std::string& is_wrong, std::string_view expected) const {
  throw EventError("field " + Quoted(Name()) + ' ' + is_wrong + ": expected " +
                   std::string(expected));
}

void JsonValue::RejectType(std::string_view expected) const {
  Reject("has type " + std::string(TypeName()), expected);
}

std::string_view JsonValue::TypeName() const { return kTypeNames[content.index()]; }

std::string JsonValue::NameOf(std::string_view field) const {
  const std::string name = Name();
  return name.empty() ? std::string(field) : name + '.' + std::string(field);
}

std::string JsonValue::Name() const {
  if (offset == 0) return "";
  const JsonValue& outer = *(this - offset);
  if (outer.Is<Object>()) return outer.NameOf(key);
  std::size_t position = 0;
  for (Iterator element = outer.begin(); element.value != this; ++element) ++position;
  return outer.Name() + '[' + std::to_string(position) + ']';
}

Json ToJson(const JsonValue& value) {
  Json json;
  if (value.Is<JsonValue::Array>()) {
    json = Json::array();
    for (const JsonValue& element : value) json.push_back(ToJson(element));
  } else if (value.Is<JsonValue::Object>()) {
    json = Json::object();
    for (const JsonValue& field : value) json[std::string(field.key)] = ToJson(field);
  } else {
    std::visit(
        [&]<typename Type>(const Type& scalar) {
          if constexpr (!std::is_empty_v<Type>) json = scalar;
        },
        value.content);
  }
  return json;
}

}  // namespace sensorvela::tools
