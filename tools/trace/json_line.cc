#include "tools/trace/json_line.h"

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
#include <utility>
#include <variant>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {

using nlohmann::json;

namespace {

/// The NaN that a text like "NaN(0x7fc00001)" names by its bits; none for any other text.
std::optional<float> NanOfBits(std::string_view text) {
  constexpr std::string_view kBegin = "NaN(0x";
  constexpr std::size_t kEnd = kBegin.size() + 8;
  const bool is_form = text.size() == kEnd + 1 && text.starts_with(kBegin) && text.ends_with(')');
  if (!is_form) return std::nullopt;
  std::uint32_t bits = 0;
  const char* const end = text.data() + kEnd;
  if (std::from_chars(text.data() + kBegin.size(), end, bits, 16).ptr != end) return std::nullopt;
  const auto number = std::bit_cast<float>(bits);
  return std::isnan(number) ? std::optional(number) : std::nullopt;
}

/// The value without what is in it.
json Shallow(const JsonValue& value) {
  if (value.Is<JsonValue::Array>()) return json::array();
  if (value.Is<JsonValue::Object>()) return json::object();
  return std::visit(
      []<typename Type>(const Type& scalar) -> json {
        if constexpr (!std::is_empty_v<Type>) return scalar;
        return nullptr;
      },
      value.content);
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
  const json number = Shallow(*this);
  if (!number.is_number()) RejectType(range.Description());
  if (Is<double>()) Reject("is not a plain 64-bit integer", range.Description());
  Reject("is " + number.dump(), range.Description());
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
  const json number = Shallow(*this);
  if (!number.is_number()) RejectType(kFloatDescription);
  // The largest float is printed rounded up, as 3.4028235e+38. What rounds to it is read as it.
  constexpr double kRoundsToInfinity = 3.4028235677973366e38;
  if (std::abs(number.get<double>()) >= kRoundsToInfinity) {
    Reject("is " + number.dump(), kFloatDescription);
  }
  return static_cast<float>(number.get<double>());
}

const JsonValue& JsonValue::AsObject() const {
  As<Object>("an object");
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

std::string_view JsonValue::TypeName() const { return Shallow(*this).type_name(); }

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
  Json result = Shallow(value);
  for (const JsonValue& inner : value) {
    if (result.is_array()) {
      result.push_back(ToJson(inner));
    } else {
      result[std::string(inner.key)] = ToJson(inner);
    }
  }
  return result;
}

/// What nlohmann-json calls back, for each value in the order of the line. The names are its own.
class JsonLine::Parser {
 public:
  explicit Parser(JsonLine& line) : values_(line.values_), texts_(line.texts_) {}

  bool null() { return Add(nullptr); }
  bool boolean(bool value) { return Add(value); }
  bool number_integer(std::int64_t value) { return Add(value); }
  bool number_unsigned(std::uint64_t value) {
    return std::in_range<std::int64_t>(value) ? Add(static_cast<std::int64_t>(value)) : Add(value);
  }
  bool number_float(double value, const std::string& /*text*/) { return Add(value); }
  bool string(const std::string& text) { return Add(Keep(text)); }
  bool binary(const json::binary_t& /*bytes*/) { return false; }  // JSON text has none.

  bool start_object(std::size_t /*size*/) { return Open(JsonValue::Object()); }
  bool start_array(std::size_t /*size*/) { return Open(JsonValue::Array()); }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }

  bool key(const std::string& name) {
    JsonValue& object = values_[open_];
    object.extent = values_.size() - open_;
    if (object.Find(name) != nullptr) {
      throw EventError("duplicate field " + Quoted(name) + ": expected each field once");
    }
    if (object.size == kMaxFields) {
      throw EventError("an object of more than " + std::to_string(kMaxFields) +
                       " fields: expected only those of an event");
    }
    key_ = Keep(name);
    return true;
  }

  bool parse_error(std::size_t column, const std::string& /*token*/, const json::exception& error) {
    constexpr int kNumberTooLarge = 406;
    if (error.id == kNumberTooLarge) {
      throw EventError("a number far beyond 64 bits: expected no number of that size in any field");
    }
    throw EventError("malformed JSON at column " + std::to_string(column) +
                     ": expected one JSON object");
  }

 private:
  /// More than any event has. Bounds the search for duplicates.
  static constexpr std::size_t kMaxFields = 64;

  std::string_view Keep(const std::string& text) {
    texts_ += text;
    return std::string_view(texts_).substr(texts_.size() - text.size());
  }

  bool Add(JsonValue::Content content) {
    if (!values_.empty()) ++values_[open_].size;
    values_.push_back(
        {.content = content, .key = std::exchange(key_, {}), .offset = values_.size() - open_});
    return true;
  }

  bool Open(JsonValue::Content content) {
    Add(content);
    open_ = values_.size() - 1;
    return true;
  }

  bool Close() {
    JsonValue& closed = values_[open_];
    closed.extent = values_.size() - open_;
    open_ -= closed.offset;
    return true;
  }

  std::vector<JsonValue>& values_;
  std::string& texts_;
  /// The position of the innermost array or object that has not been closed.
  std::size_t open_ = 0;
  /// The name of the field whose value comes next.
  std::string_view key_;
};

const JsonValue& JsonLine::Parse(std::string_view line) {
  // The JSON parser skips a byte order mark and takes a NUL byte for the line's end.
  if (line.starts_with("\xef\xbb\xbf")) {
    throw EventError("a byte order mark: expected one JSON object");
  }
  if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos) {
    throw EventError("a NUL byte at column " + std::to_string(nul + 1) +
                     ": expected one JSON object");
  }
  values_.clear();
  texts_.clear();
  texts_.reserve(line.size());  // No escape is shorter than what it stands for.
  Parser parser(*this);
  json::sax_parse(line.data(), line.data() + line.size(), &parser);
  const JsonValue& whole = values_.front();
  if (!whole.Is<JsonValue::Object>()) {
    throw EventError("a JSON value of type " + std::string(whole.TypeName()) +
                     ": expected an object");
  }
  return whole;
}

}  // namespace sensorvela::tools
