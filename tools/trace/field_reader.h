// Reads the fields of a JSON object of a trace and checks them: each is present and valid, and
// there are no others.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/trace/json_line.h"

namespace sensorvela::tools {

/// Reads the fields of one object, each by its name, a literal, and once. Throws `EventError` for a
/// field that is missing or not of the requested type and range.
class FieldReader {
 public:
  struct Field {
    std::string_view name;
    bool optional;
    /// What a value must be. Set only by a reader without an object.
    std::string expected;
  };

  /// Reads the fields of `object`, which must be one and outlive the reader.
  explicit FieldReader(const JsonValue& object);

  /// A reader without an object: records the fields that are requested and returns arbitrary
  /// values.
  FieldReader() = default;

  /// An integer, written without fraction or exponent, from `min` to `max`.
  template <typename Int>
  Int Integer(std::string_view name, Int min = std::numeric_limits<Int>::min(),
              Int max = std::numeric_limits<Int>::max()) {
    return static_cast<Int>(ReadInteger(name, {min, max}, std::nullopt));
  }

  /// Like `Integer`, but returns `fallback` when there is no such field.
  template <typename Int>
  Int OptionalInteger(std::string_view name, Int fallback,
                      Int min = std::numeric_limits<Int>::min(),
                      Int max = std::numeric_limits<Int>::max()) {
    return static_cast<Int>(ReadInteger(name, {min, max}, fallback));
  }

  // Set `number` to the field's, or leave it when there is no such field.
  template <std::integral Int>
  void OptionalNumber(std::string_view name, Int& number) {
    number = OptionalInteger<Int>(name, number);
  }
  void OptionalNumber(std::string_view name, float& number);

  /// The integers `sensor_high` and `sensor_low`.
  SensorVela::SensorId Sensor();

  /// Valid as long as the line.
  std::string_view Text(std::string_view name);

  /// The elements of an array.
  const JsonValue& List(std::string_view name);

  /// For a field that none of the other operations can read; null when there is none. The caller
  /// checks that it is as `expected`.
  const JsonValue* OptionalValue(std::string_view name, std::string_view expected);

  /// Throws when the object has a field that was not read.
  void RejectOtherFields() const;

  /// The sensor that has been read, if any.
  const std::optional<SensorVela::SensorId>& sensor() const { return sensor_; }

  /// The fields read so far, in order.
  const std::vector<Field>& fields() const { return fields_; }

  /// The fields as text for people, with optional fields in brackets.
  std::string FieldList() const;

 private:
  std::int64_t ReadInteger(std::string_view name, IntegerRange range,
                           std::optional<std::int64_t> fallback);

  /// The field's value; null in a reader without an object. `expected` describes the value when
  /// that is needed.
  template <typename Description>
  const JsonValue* Value(std::string_view name, bool optional, const Description& expected);

  const JsonValue* object_ = nullptr;
  std::vector<Field> fields_;
  /// How many of the fields were there.
  std::size_t found_ = 0;
  std::optional<SensorVela::SensorId> sensor_;
};

}  // namespace sensorvela::tools
