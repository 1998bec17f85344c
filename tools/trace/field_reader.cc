#include "tools/trace/field_reader.h"

#include <algorithm>

#include "tools/text/printable_text.h"

namespace sensorvela::replay {

float FieldReader::OptionalFloat(std::string_view name) {
  const auto value = OptionalValue(name, CheckedValue::kFloatDescription);
  return value ? value->Float() : 0;
}

std::string FieldReader::Text(std::string_view name) {
  const auto value = RequiredValue(name, "a string");
  return value ? value->Text() : "";
}

std::string FieldReader::OptionalText(std::string_view name) {
  const auto value = OptionalValue(name, "a string");
  return value ? value->Text() : "";
}

std::size_t FieldReader::OptionalChoice(std::string_view name,
                                        std::span<const std::string_view> choices,
                                        std::size_t fallback) {
  std::string expected;
  for (const std::string_view choice : choices) {
    expected += (expected.empty() ? "one of " : ", ") + std::string(choice);
  }
  const auto value = OptionalValue(name, expected);
  if (!value) return fallback;
  const std::string text = value->Text();
  const auto found = std::ranges::find(choices, text);
  if (found != choices.end()) return static_cast<std::size_t>(found - choices.begin());
  value->Reject("is " + Quoted(text), expected);
}

std::vector<CheckedValue> FieldReader::List(std::string_view name) {
  const auto value = RequiredValue(name, "an array");
  return value ? value->List() : std::vector<CheckedValue>();
}

std::optional<CheckedValue> FieldReader::OptionalValue(std::string_view name,
                                                       std::string_view expected) {
  fields_.push_back({std::string(name), true, ""});
  if (object_ == nullptr) {
    fields_.back().expected = expected;
    return std::nullopt;
  }
  const auto found = object_->find(fields_.back().name);
  if (found == object_->end()) return std::nullopt;
  return CheckedValue(*found, path_ + fields_.back().name);
}

void FieldReader::RejectOtherFields() const {
  for (const auto& [name, value] : object_->items()) {
    if (std::ranges::find(fields_, name, &Field::name) == fields_.end()) {
      throw EventError("unknown field " + Quoted(path_ + name) + ": expected no others than " +
                       FieldList());
    }
  }
}

std::string FieldReader::FieldList() const {
  std::string list;
  for (const Field& field : fields_) {
    if (!list.empty()) list += ' ';
    list += field.optional ? '[' + field.name + ']' : field.name;
  }
  return list;
}

std::int64_t FieldReader::ReadInteger(std::string_view name, IntegerRange range,
                                      std::optional<std::int64_t> fallback) {
  const auto value = fallback ? OptionalValue(name, range.Description())
                              : RequiredValue(name, range.Description());
  return value ? value->IntegerIn(range) : fallback.value_or(range.min);
}

std::optional<CheckedValue> FieldReader::RequiredValue(std::string_view name,
                                                       std::string_view expected) {
  const auto value = OptionalValue(name, expected);
  fields_.back().optional = false;
  if (!value && object_ != nullptr) {
    throw EventError("missing field " + Quoted(path_ + std::string(name)) + ": expected " +
                     std::string(expected));
  }
  return value;
}

}  // namespace sensorvela::replay
