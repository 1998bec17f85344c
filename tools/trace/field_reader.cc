#include "tools/trace/field_reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/text/printable_text.h"

namespace sensorvela::tools {

FieldReader::FieldReader(const JsonValue& object, const JsonValue& line)
    : object_(&object), line_(&line) {
  fields_.reserve(object.size);
}

template <typename Description>
std::optional<CheckedValue> FieldReader::Value(std::string_view name, bool optional,
                                               const Description& expected) {
  fields_.push_back({name, optional, ""});
  if (object_ == nullptr) {
    fields_.back().expected = expected();
    return std::nullopt;
  }
  if (const JsonValue* const value = object_->Find(name)) {
    ++found_;
    return CheckedValue(*value, *line_);
  }
  if (!optional) RejectMissing(name, std::string(expected()));
  return std::nullopt;
}

float FieldReader::OptionalFloat(std::string_view name) {
  const auto value = OptionalValue(name, CheckedValue::kFloatDescription);
  return value ? value->Float() : 0;
}

std::string FieldReader::Text(std::string_view name) {
  const auto value = Value(name, false, [] { return "a string"; });
  return value ? value->Text() : "";
}

std::string FieldReader::OptionalText(std::string_view name) {
  const auto value = OptionalValue(name, "a string");
  return value ? value->Text() : "";
}

std::size_t FieldReader::OptionalChoice(std::string_view name,
                                        std::span<const std::string_view> choices,
                                        std::size_t fallback) {
  const auto expected = [&] {
    std::string list;
    for (const std::string_view choice : choices) {
      list += (list.empty() ? "one of " : ", ") + std::string(choice);
    }
    return list;
  };
  const auto value = Value(name, true, expected);
  if (!value) return fallback;
  const std::string text = value->Text();
  const auto found = std::ranges::find(choices, text);
  if (found != choices.end()) return static_cast<std::size_t>(found - choices.begin());
  value->Reject("is " + Quoted(text), expected());
}

std::vector<CheckedValue> FieldReader::List(std::string_view name) {
  const auto value = Value(name, false, [] { return "an array"; });
  return value ? value->List() : std::vector<CheckedValue>();
}

std::optional<CheckedValue> FieldReader::OptionalValue(std::string_view name,
                                                       std::string_view expected) {
  return Value(name, true, [&] { return std::string(expected); });
}

void FieldReader::RejectOtherFields() const {
  if (found_ == object_->size) return;
  const JsonValue* other = nullptr;
  for (const JsonValue* field = object_->begin(); field != object_->end(); field = field->next()) {
    const bool was_read = std::ranges::find(fields_, field->key, &Field::name) != fields_.end();
    if (!was_read && (other == nullptr || field->key < other->key)) other = field;
  }
  if (other == nullptr) return;
  throw EventError("unknown field " + Quoted(FullName(other->key)) + ": expected no others than " +
                   FieldList());
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
  const auto value = Value(name, fallback.has_value(), [&] { return range.Description(); });
  return value ? value->IntegerIn(range) : fallback.value_or(range.min);
}

void FieldReader::RejectMissing(std::string_view name, const std::string& expected) const {
  throw EventError("missing field " + Quoted(FullName(name)) + ": expected " + expected);
}

std::string FieldReader::FullName(std::string_view name) const {
  const std::string outer = CheckedValue(*object_, *line_).name();
  return outer.empty() ? std::string(name) : outer + '.' + std::string(name);
}

}  // namespace sensorvela::tools
