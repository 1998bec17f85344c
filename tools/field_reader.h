// Reads the fields of one event and checks them: presence, type, range, and that there are no
// others.
#pragma once

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sensorvela::replay {

/// What is wrong with an event and what was expected, in one printable line.
class EventError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the fields of one event, each by its name and once. A field that is not as asked for
/// throws `EventError`.
class FieldReader {
 public:
  /// Reads from `event`, a JSON object that outlives the reader.
  explicit FieldReader(const nlohmann::json& event) : event_(&event) {}

  /// Reads nothing: takes note of the fields that it is asked for, and answers with any value.
  FieldReader() = default;

  /// An integer, written without fraction or exponent, from `min` to `max`.
  template <typename Int>
  Int Integer(std::string_view name, Int min = std::numeric_limits<Int>::min(),
              Int max = std::numeric_limits<Int>::max()) {
    return static_cast<Int>(ReadInteger(name, {min, max}, nullptr));
  }

  /// The same; `fallback` when the event has no such field.
  template <typename Int>
  Int OptionalInteger(std::string_view name, Int fallback, Int min, Int max) {
    const std::int64_t wide_fallback = fallback;
    return static_cast<Int>(ReadInteger(name, {min, max}, &wide_fallback));
  }

  std::string Text(std::string_view name);

  /// Throws when the event has a field that was not read.
  void RejectOtherFields() const;

  /// The fields read so far, in order, optional ones in brackets.
  std::string FieldList() const;

 private:
  struct Range {
    std::int64_t min;
    std::int64_t max;
  };
  struct Field {
    std::string name;
    bool optional;
  };

  std::int64_t ReadInteger(std::string_view name, Range range, const std::int64_t* fallback);

  /// The field's value; null when there is none and it is optional, or when nothing is read.
  const nlohmann::json* Find(std::string_view name, bool optional, const std::string& expected);

  const nlohmann::json* event_ = nullptr;
  std::vector<Field> fields_;
};

}  // namespace sensorvela::replay
