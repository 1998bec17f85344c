#include "tools/trace/json_line.h"

#include <rapidjson/reader.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::replay {

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

/// The values of a line, built in the order in which a parser meets them.
class JsonLine::Values {
 public:
  void Clear() {
    values_.clear();
    open_.clear();
    key_ = {};
  }

  const JsonValue& whole() const { return values_.front(); }

  /// The innermost array or object that has not been closed.
  JsonValue& open() { return values_[open_.back()]; }

  /// How many arrays and objects have not been closed.
  std::size_t depth() const { return open_.size(); }

  void Key(std::string_view key) { key_ = key; }

  JsonValue& Add(Type type) {
    if (!open_.empty()) ++open().size;
    return values_.emplace_back(JsonValue{.type = type, .key = std::exchange(key_, {})});
  }

  void Open(Type type) {
    Add(type);
    open_.push_back(values_.size() - 1);
  }

  void Close() {
    open().extent = values_.size() - open_.back();
    open_.pop_back();
  }

 private:
  std::vector<JsonValue> values_;
  std::vector<std::size_t> open_;
  std::string_view key_;
};

/// Parses most lines, and fails without a reason for the others and for every invalid line.
class JsonLine::FastParser {
 public:
  explicit FastParser(Values& values) : values_(values) {}

  bool Parse(std::string_view line) {
    if (!IsPlain(line)) return false;
    line_ = line;
    values_.Clear();
    rapidjson::InsituStringStream stream(line_.data());
    // Calls back for each value, and leaves the strings and numbers in the line.
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    return !reader_.Parse<kFlags>(stream, *this).IsError() && values_.whole().type == Type::kObject;
  }

  // What the reader calls back. False ends the parsing.

  bool Null() { return false; }  // No field takes it.

  bool Bool(bool value) {
    values_.Add(Type::kBool).integer = value ? 1 : 0;
    return true;
  }

  bool RawNumber(const char* text, rapidjson::SizeType size, bool /*copy*/) {
    const char* const end = text + size;
    std::int64_t integer = 0;
    if (const auto [at, error] = std::from_chars(text, end, integer);
        at == end && error == std::errc()) {
      values_.Add(Type::kInteger).integer = integer;
      return true;
    }
    std::uint64_t bits = 0;
    if (const auto [at, error] = std::from_chars(text, end, bits);
        at == end && error == std::errc()) {
      values_.Add(Type::kUnsigned).integer = static_cast<std::int64_t>(bits);
      return true;
    }
    // What follows a number in a line is no part of one, so `strtod` stops there.
    const double number = std::strtod(text, nullptr);
    values_.Add(Type::kFloat).number = number;
    return std::isfinite(number);
  }

  bool String(const char* text, rapidjson::SizeType size, bool /*copy*/) {
    values_.Add(Type::kString).text = {text, size};
    return true;
  }

  bool Key(const char* text, rapidjson::SizeType size, bool /*copy*/) {
    values_.Key({text, size});
    return true;
  }

  bool StartObject() {
    values_.Open(Type::kObject);
    return values_.depth() <= kMaxDepth;
  }

  bool EndObject(rapidjson::SizeType /*size*/) {
    const JsonValue& object = values_.open();
    values_.Close();
    return HasDistinctKeys(object);
  }

  bool StartArray() {
    values_.Open(Type::kArray);
    return values_.depth() <= kMaxDepth;
  }

  bool EndArray(rapidjson::SizeType /*size*/) {
    values_.Close();
    return true;
  }

  // Never called: numbers are left as text.
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(std::int64_t) { return false; }
  bool Uint64(std::uint64_t) { return false; }
  bool Double(double) { return false; }

 private:
  /// The reader calls itself for each level.
  static constexpr std::size_t kMaxDepth = 100;

  /// Whether the line has only ASCII, no NUL, and no character by its number, so that the reader
  /// takes it for what it is: it accepts bytes that are not UTF-8, and half of a surrogate pair.
  static bool IsPlain(std::string_view line) {
    unsigned others = 0;
    for (const char c : line) others |= static_cast<unsigned>(static_cast<signed char>(c) <= 0);
    return others == 0 && line.find("\\u") == std::string_view::npos;
  }

  /// Also false for an object with so many fields that the comparison would take long.
  static bool HasDistinctKeys(const JsonValue& object) {
    constexpr std::size_t kMaxFields = 32;
    if (object.size > kMaxFields) return false;
    for (const JsonValue* field = object.begin(); field != object.end(); field = field->next()) {
      if (object.Find(field->key) != field) return false;
    }
    return true;
  }

  Values& values_;
  std::string line_;
  rapidjson::Reader reader_;
};

/// Parses every line, or says what is wrong with it and where. Slower.
class JsonLine::ExactParser {
 public:
  explicit ExactParser(Values& values, std::deque<std::string>& texts)
      : values_(values), texts_(texts) {}

  void Parse(std::string_view line) {
    // The parser passes over the one and takes the other for the line's end.
    if (line.starts_with("\xef\xbb\xbf")) {
      throw EventError("a byte order mark: expected one JSON object");
    }
    if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos) {
      throw EventError("a NUL byte at column " + std::to_string(nul + 1) +
                       ": expected one JSON object");
    }
    values_.Clear();
    texts_.clear();
    json::sax_parse(line, this);
    if (const JsonValue& whole = values_.whole(); whole.type != Type::kObject) {
      throw EventError("a JSON value of type " + std::string(whole.TypeName()) +
                       ": expected an object");
    }
  }

  // What the parser calls back. The names are its own.

  bool null() {
    values_.Add(Type::kNull);
    return true;
  }

  bool boolean(bool value) {
    values_.Add(Type::kBool).integer = value ? 1 : 0;
    return true;
  }

  bool number_integer(std::int64_t value) {
    values_.Add(Type::kInteger).integer = value;
    return true;
  }

  bool number_unsigned(std::uint64_t value) {
    const auto integer = static_cast<std::int64_t>(value);
    values_.Add(integer < 0 ? Type::kUnsigned : Type::kInteger).integer = integer;
    return true;
  }

  bool number_float(double value, const std::string& /*text*/) {
    values_.Add(Type::kFloat).number = value;
    return true;
  }

  bool string(std::string& text) {
    values_.Add(Type::kString).text = texts_.emplace_back(std::move(text));
    return true;
  }

  bool binary(const json::binary_t& /*bytes*/) { return false; }  // JSON text has none.

  bool start_object(std::size_t /*size*/) {
    values_.Open(Type::kObject);
    keys_.emplace_back();
    return true;
  }

  bool key(const std::string& name) {
    const auto [key, is_new] = keys_.back().insert(name);
    if (!is_new) {
      throw EventError("duplicate field " + Quoted(name) + ": expected each field once");
    }
    values_.Key(texts_.emplace_back(name));
    return true;
  }

  bool end_object() {
    values_.Close();
    keys_.pop_back();
    return true;
  }

  bool start_array(std::size_t /*size*/) {
    values_.Open(Type::kArray);
    return true;
  }

  bool end_array() {
    values_.Close();
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
  Values& values_;
  std::deque<std::string>& texts_;
  /// Of each open object.
  std::vector<std::set<std::string>> keys_;
};

JsonLine::JsonLine()
    : values_(std::make_unique<Values>()), fast_parser_(std::make_unique<FastParser>(*values_)) {}

JsonLine::~JsonLine() = default;

const JsonValue& JsonLine::Parse(std::string_view line) {
  if (!fast_parser_->Parse(line)) ExactParser(*values_, texts_).Parse(line);
  return values_->whole();
}

}  // namespace sensorvela::replay
