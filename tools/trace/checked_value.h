// Reads one JSON value of a trace and checks it: type, range and length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/trace/json_line.h"

namespace sensorvela::tools {

/// The integers from `min` to `max`.
struct IntegerRange {
  std::int64_t min;
  std::int64_t max;

  std::string Description() const;
};

/// A value of a line, which must outlive this. Each operation throws `EventError` if the value does
/// not have the requested type, range or length.
class CheckedValue {
 public:
  /// A value in `line`, the whole object.
  CheckedValue(const JsonValue& value, const JsonValue& line) : value_(&value), line_(&line) {}

  const JsonValue& line() const { return *line_; }

  /// For messages: how to get to the value from the line's fields, as in `values[1].bools[0]`.
  std::string name() const;

  /// An integer, written without fraction or exponent.
  template <typename Int>
  Int Integer() const {
    using Limits = std::numeric_limits<Int>;
    return static_cast<Int>(IntegerIn({Limits::min(), Limits::max()}));
  }
  std::int64_t IntegerIn(IntegerRange range) const;

  /// A number in a float's range, or the text "NaN", "Infinity" or "-Infinity".
  float Float() const;
  static constexpr std::string_view kFloatDescription =
      R"(a number in a float's range, "NaN", "Infinity" or "-Infinity")";

  bool Bool() const;
  std::string Text() const;
  const JsonValue& Object() const;

  /// The elements of an array, named after the array and their positions. If `count` is given,
  /// there must be that many.
  std::vector<CheckedValue> List(std::optional<std::size_t> count = std::nullopt) const;

  /// Throws an `EventError` that says how the value `is_wrong` and what was expected.
  [[noreturn]] void Reject(const std::string& is_wrong, std::string_view expected) const;

 private:
  [[noreturn]] void RejectType(std::string_view expected) const;

  const JsonValue* value_;
  const JsonValue* line_;
};

}  // namespace sensorvela::tools
