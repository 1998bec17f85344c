#include "tools/trace/json_line.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {

using nlohmann::json;

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
