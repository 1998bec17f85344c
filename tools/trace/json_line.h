// One line of a trace, a JSON object: its values, and the checks of their types and ranges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// What is wrong with an event and what was expected, in one printable line.
class EventError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The integers from `min` to `max`.
struct IntegerRange {
  std::int64_t min;
  std::int64_t max;

  std::string Description() const;
};

/// A value of a line. The elements of an array and the fields of an object follow it in memory, in
/// order and each followed by its own.
struct JsonValue {
  struct Array {};
  struct Object {};
  /// An integer is unsigned only if it needs that, and a double if it has more than 64 bits. A text
  /// lives as long as the line.
  using Content = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                               std::string_view, Array, Object>;

  struct Iterator {
    const JsonValue* value;

    const JsonValue& operator*() const { return *value; }
    const JsonValue* operator->() const { return value; }
    Iterator& operator++() {
      value += value->extent;
      return *this;
    }
    bool operator==(const Iterator&) const = default;
  };

  Content content;
  /// The name of the field that has this value, if it is in an object.
  std::string_view key = {};
  /// How far before this value the one begins that has it; 0 for the whole line.
  std::size_t offset = 0;
  /// The number of elements or fields.
  std::size_t size = 0;
  /// The number of values that this one consists of, itself included.
  std::size_t extent = 1;

  // The elements or fields.
  Iterator begin() const { return {this + 1}; }
  Iterator end() const { return {this + extent}; }

  /// The field of that name, or null.
  const JsonValue* Find(std::string_view name) const;

  template <typename Type>
  bool Is() const {
    return std::holds_alternative<Type>(content);
  }

  // Each of these throws `EventError` if the value does not have the requested type, range or
  // length.

  /// An integer, written without fraction or exponent.
  template <typename Int>
  Int Integer() const {
    using Limits = std::numeric_limits<Int>;
    return static_cast<Int>(IntegerIn({Limits::min(), Limits::max()}));
  }
  std::int64_t IntegerIn(IntegerRange range) const;

  /// A number in a float's range, or a text: "NaN", "Infinity", "-Infinity", or a NaN by its bits,
  /// as in "NaN(0x7fc00001)".
  float Float() const;
  static constexpr std::string_view kFloatDescription =
      R"(a number in a float's range, "NaN", "Infinity" or "-Infinity")";

  bool Bool() const { return As<bool>("true or false"); }
  std::string_view Text() const { return As<std::string_view>("a string"); }
  /// The value itself.
  const JsonValue& AsObject() const;
  /// The value itself. If `count` is given, it must have that many elements.
  const JsonValue& AsList(std::optional<std::size_t> count = std::nullopt) const;

  /// Throws an `EventError` that says how the value `is_wrong` and what was expected.
  [[noreturn]] void Reject(const std::string& is_wrong, std::string_view expected) const;

  /// For messages: null, boolean, number, string, array or object.
  std::string_view TypeName() const;
  /// For messages: how to get to a field of this object from the whole line, as in
  /// `memory[0].kind`.
  std::string NameOf(std::string_view field) const;

 private:
  template <typename Type>
  const Type& As(std::string_view expected) const {
    if (!Is<Type>()) RejectType(expected);
    return std::get<Type>(content);
  }
  [[noreturn]] void RejectType(std::string_view expected) const;
  std::string Name() const;
};

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
};

}  // namespace sensorvela::tools
