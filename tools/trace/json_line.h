// Parses one line of a trace, a JSON object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// What is wrong with an event and what was expected, in one printable line.
class EventError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A value of a line. The elements of an array and the fields of an object follow it in memory, in
/// order and each followed by its own.
struct JsonValue {
  enum class Type : std::uint8_t {
    kNull,
    kBool,
    kInteger,
    /// An integer that needs an unsigned type of 64 bits.
    kUnsigned,
    /// Any other number, also an integer of more than 64 bits.
    kFloat,
    kString,
    kArray,
    kObject,
  };

  Type type = Type::kNull;
  /// The name of the field that has this value, if it is in an object.
  std::string_view key = {};
  std::string_view text = {};
  /// Of a bool 0 or 1, of a `kUnsigned` its bits.
  std::int64_t integer = 0;
  /// Of a `kFloat`.
  double number = 0;
  /// The number of elements or fields.
  std::size_t size = 0;
  /// The number of values that this one consists of, itself included.
  std::size_t extent = 1;

  // The elements or fields, to be visited by `next`.
  const JsonValue* begin() const { return this + 1; }
  const JsonValue* end() const { return this + extent; }
  /// The value that follows this one and all that is in it.
  const JsonValue* next() const { return this + extent; }

  /// The field of that name, or null.
  const JsonValue* Find(std::string_view name) const;

  /// For messages: null, boolean, number, string, array or object.
  std::string_view TypeName() const;
};

/// The float that is nearest to the number; never an infinity.
float NearestFloat(double number);

/// The value with all that is in it.
Json ToJson(const JsonValue& value);

/// Keeps its memory from line to line.
class JsonLine {
 public:
  /// The object in `line`, in which no object has two fields of the same name. It is valid until
  /// the next call. Throws `EventError` if the line is anything else.
  const JsonValue& Parse(std::string_view line);

 private:
  class Parser;

  std::vector<JsonValue> values_;
  /// What `values_` refers to. Has room for all of a line's texts, so that they stay where they
  /// are.
  std::string texts_;
  /// The positions of the arrays and objects that have not been closed.
  std::vector<std::size_t> open_;
};

}  // namespace sensorvela::tools
