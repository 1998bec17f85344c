#include "tools/field_reader.h"

#include <algorithm>

#include "tools/printable_text.h"

namespace sensorvela::replay {
namespace {

using nlohmann::json;

[[noreturn]] void Reject(std::string_view name, const std::string& found,
                         const std::string& expected) {
  throw EventError("field " + Quoted(name) + " " + found + ": expected " + expected);
}

bool FitsInt64(const json& number) {
  return !number.is_number_unsigned() ||
         number.get<std::uint64_t>() <=
             static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

}  // namespace

std::int64_t FieldReader::ReadInteger(std::string_view name, Range range,
                                      const std::int64_t* fallback) {
  const std::string expected =
      "an integer from " + std::to_string(range.min) + " to " + std::to_string(range.max);
  const json* value = Find(name, fallback != nullptr, expected);
  if (value == nullptr) return fallback != nullptr ? *fallback : range.min;
  if (!value->is_number()) Reject(name, "has type " + std::string(value->type_name()), expected);
  // Integers of more than 64 bits arrive as floating-point numbers.
  if (value->is_number_float()) Reject(name, "is not a plain 64-bit integer", expected);
  if (FitsInt64(*value)) {
    const auto number = value->get<std::int64_t>();
    if (number >= range.min && number <= range.max) return number;
  }
  Reject(name, "is " + value->dump(), expected);
}

std::string FieldReader::Text(std::string_view name) {
  const json* value = Find(name, false, "a string");
  if (value == nullptr) return {};
  if (!value->is_string()) Reject(name, "has type " + std::string(value->type_name()), "a string");
  return value->get<std::string>();
}

void FieldReader::RejectOtherFields() const {
  for (const auto& [name, value] : event_->items()) {
    if (std::ranges::find(fields_, name, &Field::name) == fields_.end()) {
      throw EventError("unknown field " + Quoted(name) + ": expected no others than " +
                       FieldList());
    }
  }
}

std::string FieldReader::FieldList() const {
  std::string list;
  for (const auto& [name, optional] : fields_) {
    if (!list.empty()) list += ' ';
    list += optional ? '[' + name + ']' : name;
  }
  return list;
}

const json* FieldReader::Find(std::string_view name, bool optional, const std::string& expected) {
  fields_.push_back({std::string(name), optional});
  if (event_ == nullptr) return nullptr;
  const auto found = event_->find(fields_.back().name);
  if (found != event_->end()) return &*found;
  if (optional) return nullptr;
  throw EventError("missing field " + Quoted(name) + ": expected " + expected);
}

}  // namespace sensorvela::replay
