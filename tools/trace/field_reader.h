// Reads the fields of a JSON object of a trace and checks them: each is present and valid, and
// there are no others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/trace/checked_value.h"

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

  /// Reads the fields of an event, a JSON object that must outlive the reader.
  explicit FieldReader(const JsonValue& event) : FieldReader(event, event) {}

  /// Reads the fields of an object inside of an event.
  explicit FieldReader(const CheckedValue& nested) : FieldReader(nested.Object(), nested.line()) {}

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

  /// Returns 0 when there is no such field.
  float OptionalFloat(std::string_view name);

  std::string Text(std::string_view name);

  /// Returns an empty text when there is no such field.
  std::string OptionalText(std::string_view name);

  /// The position of the field's text in `choices`; `fallback` when there is no such field.
  std::size_t OptionalChoice(std::string_view name, std::span<const std::string_view> choices,
                             std::size_t fallback);

  std::vector<CheckedValue> List(std::string_view name);

  /// For a field that none of the other operations can read. The caller checks that it is as
  /// `expected`.
  std::optional<CheckedValue> OptionalValue(std::string_view name, std::string_view expected);

  /// Throws when the object has a field that was not read.
  void RejectOtherFields() const;

  /// The fields read so far, in order.
  const std::vector<Field>& fields() const { return fields_; }

  /// The fields as text for people, with optional fields in brackets.
  std::string FieldList() const;

 private:
  FieldReader(const JsonValue& object, const JsonValue& line);

  std::int64_t ReadInteger(std::string_view name, IntegerRange range,
                           std::optional<std::int64_t> fallback);

  /// The field's value; none in a reader without an object. `expected` describes the value when
  /// that is needed.
  template <typename Description>
  std::optional<CheckedValue> Value(std::string_view name, bool optional,
                                    const Description& expected);

  [[noreturn]] void RejectMissing(std::string_view name, const std::string& expected) const;

  /// The name of a field of this object, for messages.
  std::string FullName(std::string_view name) const;

  const JsonValue* object_ = nullptr;
  /// The whole line's object.
  const JsonValue* line_ = nullptr;
  std::vector<Field> fields_;
  /// How many of the fields were there.
  std::size_t found_ = 0;
};

}  // namespace sensorvela::tools
