#include "recorder/outside_atom.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sensorvela::recorder {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;
using Tag = VendorAtomValue::Tag;

void Write(EventLine& line, std::int64_t value) { line.Value(value); }
void Write(EventLine& line, float value) { line.Value(value); }
void Write(EventLine& line, bool value) { line.Value(value); }
void Write(EventLine& line, const std::string& value) { line.Value(std::string_view(value)); }
void Write(EventLine& line, std::int32_t value) { line.Value(value); }
void Write(EventLine& line, std::uint8_t value) { line.Value(std::int64_t{value}); }
void Write(EventLine& line, const std::optional<std::string>& value) {
  Write(line, value.value_or(""));
}

template <typename Element>
void Write(EventLine& line, const std::optional<std::vector<Element>>& list) {
  line.Open('[');
  // The elements of a `std::vector<bool>` are no bools: the cast converts them.
  if (list) {
    for (const auto& element : *list) Write(line, static_cast<const Element&>(element));
  }
  line.Close(']');
}

template <Tag tag>
void WriteNamed(EventLine& line, std::string_view name, const VendorAtomValue& value) {
  Write(line.Name(name), value.get<tag>());
}

void WriteValue(EventLine& line, const VendorAtomValue& value) {
  switch (value.getTag()) {
    case Tag::intValue:
      WriteNamed<Tag::intValue>(line, "int", value);
      break;
    case Tag::longValue:
      WriteNamed<Tag::longValue>(line, "long", value);
      break;
    case Tag::floatValue:
      WriteNamed<Tag::floatValue>(line, "float", value);
      break;
    case Tag::stringValue:
      WriteNamed<Tag::stringValue>(line, "string", value);
      break;
    case Tag::boolValue:
      WriteNamed<Tag::boolValue>(line, "bool", value);
      break;
    case Tag::repeatedIntValue:
      WriteNamed<Tag::repeatedIntValue>(line, "ints", value);
      break;
    case Tag::repeatedLongValue:
      WriteNamed<Tag::repeatedLongValue>(line, "longs", value);
      break;
    case Tag::repeatedFloatValue:
      WriteNamed<Tag::repeatedFloatValue>(line, "floats", value);
      break;
    case Tag::repeatedStringValue:
      WriteNamed<Tag::repeatedStringValue>(line, "strings", value);
      break;
    case Tag::repeatedBoolValue:
      WriteNamed<Tag::repeatedBoolValue>(line, "bools", value);
      break;
    case Tag::byteArrayValue:
      WriteNamed<Tag::byteArrayValue>(line, "bytes", value);
      break;
  }
}

}  // namespace

void WriteOutsideAtom(EventLine& line, const SensorVela::VendorAtom& atom) {
  line.Integer("id", atom.atomId).Text("domain", atom.reverseDomainName);
  line.Name("values").Open('[');
  for (const VendorAtomValue& value : atom.values) {
    line.Open('{');
    WriteValue(line, value);
    line.Close('}');
  }
  line.Close(']');
}

}  // namespace sensorvela::recorder
