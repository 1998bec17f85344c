#include "tools/trace/json_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {

using nlohmann::json;
using Type = JsonValue::Type;

const JsonValue* JsonValue::Find(std::string_view name) const {
  for (const JsonValue* field = begin(); field != end(); field = field->next()) {
    if (field->key == name) return field;
  }
  return nullptr;
}

std::string_view JsonValue::TypeName() const {
  switch (type) {
    case Type::kNull:
      return "null";
    case Type::kBool:
      return "boolean";
    case Type::kInteger:
    case Type::kUnsigned:
    case Type::kFloat:
      return "number";
    case Type::kString:
      return "string";
    case Type::kArray:
      return "array";
    case Type::kObject:
      return "object";
  }
  return "?";
}

float NearestFloat(double number) {
  using Limits = std::numeric_limits<float>;
  return static_cast<float>(std::clamp(number, double{Limits::lowest()}, double{Limits::max()}));
}

namespace {

Json ArrayToJson(const JsonValue& value) {
  Json::array_t array;
  array.reserve(value.size);
  for (const JsonValue* inner = value.begin(); inner != value.end(); inner = inner->next()) {
    array.push_back(ToJson(*inner));
  }
  return array;
}

Json ObjectToJson(const JsonValue& value) {
  Json::object_t object;
  object.reserve(value.size);
  for (const JsonValue* inner = value.begin(); inner != value.end(); inner = inner->next()) {
    object.emplace_back(std::string(inner->key), ToJson(*inner));
  }
  return object;
}

}  // namespace

Json ToJson(const JsonValue& value) {
  switch (value.type) {
    case Type::kNull:
      break;
    case Type::kBool:
      return value.integer != 0;
    case Type::kInteger:
      return value.integer;
    case Type::kUnsigned:
      return static_cast<std::uint64_t>(value.integer);
    case Type::kFloat:
      return NearestFloat(value.number);
    case Type::kString:
      return value.text;
    case Type::kArray:
      return ArrayToJson(value);
    case Type::kObject:
      return ObjectToJson(value);
  }
  return {};
}

/// What nlohmann-json calls back, for each value in the order of the line. The names are its own.
class JsonLine::Parser {
 public:
  explicit Parser(JsonLine& line) : values_(line.values_), texts_(line.texts_), open_(line.open_) {}

  bool null() {
    Add(Type::kNull);
    return true;
  }

  bool boolean(bool value) {
    Add(Type::kBool).integer = value ? 1 : 0;
    return true;
  }

  bool number_integer(std::int64_t value) {
    Add(Type::kInteger).integer = value;
    return true;
  }

  bool number_unsigned(std::uint64_t value) {
    const auto integer = static_cast<std::int64_t>(value);
    Add(integer < 0 ? Type::kUnsigned : Type::kInteger).integer = integer;
    return true;
  }

  bool number_float(double value, const std::string& /*text*/) {
    Add(Type::kFloat).number = value;
    return true;
  }

  bool string(const std::string& text) {
    Add(Type::kString).text = Keep(text);
    return true;
  }

  bool binary(const json::binary_t& /*bytes*/) { return false; }  // JSON text has none.

  bool start_object(std::size_t /*size*/) { return Open(Type::kObject); }
  bool start_array(std::size_t /*size*/) { return Open(Type::kArray); }
  bool end_object() { return Close(); }
  bool end_array() { return Close(); }

  bool key(const std::string& name) {
    JsonValue& object = values_[open_.back()];
    object.extent = values_.size() - open_.back();
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

  JsonValue& Add(Type type) {
    if (!open_.empty()) ++values_[open_.back()].size;
    return values_.emplace_back(JsonValue{.type = type, .key = std::exchange(key_, {})});
  }

  bool Open(Type type) {
    Add(type);
    open_.push_back(values_.size() - 1);
    return true;
  }

  bool Close() {
    values_[open_.back()].extent = values_.size() - open_.back();
    open_.pop_back();
    return true;
  }

  std::vector<JsonValue>& values_;
  std::string& texts_;
  std::vector<std::size_t>& open_;
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
  open_.clear();
  Parser parser(*this);
  json::sax_parse(line.data(), line.data() + line.size(), &parser);
  const JsonValue& whole = values_.front();
  if (whole.type != Type::kObject) {
    throw EventError("a JSON value of type " + std::string(whole.TypeName()) +
                     ": expected an object");
  }
  return whole;
}

}  // namespace sensorvela::tools
