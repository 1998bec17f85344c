// Reads one JSON value of a trace and checks it: type, range and length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sensorvela::replay {

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

/// A JSON value, which must outlive this, and its name for messages. Each operation throws
/// `EventError` if the value does not have the requested type, range or length.
class CheckedValue {
 public:
  CheckedValue(const nlohmann::json& value, std::string name)
      : value_(&value), name_(std::move(name)) {}

  const std::string& name() const { return name_; }

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
  const nlohmann::json& Object() const;

  /// The elements of an array, named after the array and their positions. If `count` is given,
  /// there must be that many.
  std::vector<CheckedValue> List(std::optional<std::size_t> count = std::nullopt) const;

  /// Throws an `EventError` that says how the value `is_wrong` and what was expected.
  [[noreturn]] void Reject(const std::string& is_wrong, std::string_view expected) const;

 private:
  [[noreturn]] void RejectType(std::string_view expected) const;

  const nlohmann::json* value_;
  std::string name_;
};

}  // namespace sensorvela::replay
