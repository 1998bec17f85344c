#include "tools/trace/field_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/text/printable_text.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

FieldReader::FieldReader(const JsonValue& object) : object_(&object.AsObject()) {
  fields_.reserve(object.size);
}

template <typename Description>
const JsonValue* FieldReader::Value(std::string_view name, bool optional,
                                    const Description& expected) {
  fields_.push_back({name, optional, object_ == nullptr ? std::string(expected()) : ""});
  const JsonValue* const value = object_ == nullptr ? nullptr : object_->Find(name);
  if (value != nullptr) ++found_;
  if (value == nullptr && object_ != nullptr && !optional) {
    throw EventError("missing field " + Quoted(object_->NameOf(name)) + ": expected " +
                     std::string(expected()));
  }
  return value;
}

void FieldReader::OptionalNumber(std::string_view name, float& number) {
  const JsonValue* const value = OptionalValue(name, JsonValue::kFloatDescription);
  if (value != nullptr) number = value->Float();
}

SensorVela::SensorId FieldReader::Sensor() {
  const auto high = Integer<std::uint32_t>(trace_format::field::kSensorHigh);
  return sensor_.emplace(high, Integer<std::int32_t>(trace_format::field::kSensorLow));
}

std::string_view FieldReader::Text(std::string_view name) {
  const JsonValue* const value = Value(name, false, [] { return "a string"; });
  return value != nullptr ? value->Text() : "";
}

const JsonValue& FieldReader::List(std::string_view name) {
  static constexpr JsonValue kEmpty = {.content = JsonValue::Array()};
  const JsonValue* const value = Value(name, false, [] { return "an array"; });
  return value != nullptr ? value->AsList() : kEmpty;
}

const JsonValue* FieldReader::OptionalValue(std::string_view name, std::string_view expected) {
  return Value(name, true, [&] { return expected; });
}

void FieldReader::RejectOtherFields() const {
  if (found_ == object_->size) return;
  const JsonValue* other = nullptr;
  for (const JsonValue& field : *object_) {
    const bool was_read = std::ranges::find(fields_, field.key, &Field::name) != fields_.end();
    if (!was_read && (other == nullptr || field.key < other->key)) other = &field;
  }
  if (other == nullptr) return;
  throw EventError("unknown field " + Quoted(object_->NameOf(other->key)) +
                   ": expected no others than " + FieldList());
}

std::string FieldReader::FieldList() const {
  std::string list;
  for (const Field& field : fields_) {
    if (!list.empty()) list += ' ';
    list += field.optional ? '[' + std::string(field.name) + ']' : field.name;
  }
  return list;
}

std::int64_t FieldReader::ReadInteger(std::string_view name, IntegerRange range,
                                      std::optional<std::int64_t> fallback) {
  const JsonValue* const value =
      Value(name, fallback.has_value(), [&] { return range.Description(); });
  return value != nullptr ? value->IntegerIn(range) : fallback.value_or(range.min);
}

}  // namespace sensorvela::tools
