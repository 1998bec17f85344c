#include "tools/trace/outside_atom.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/testkit/value_kinds.h>

#include "tools/text/printable_text.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using Tag = VendorAtomValue::Tag;

/// A value of a kind that is not repeated.
template <Tag tag, typename Content>
VendorAtomValue Value(Content content) {
  return VendorAtomValue::make<tag>(std::move(content));
}

/// A value of a repeated kind; `read` reads an element.
template <Tag tag, typename Element, typename Read>
VendorAtomValue List(const CheckedValue& list, Read read) {
  std::vector<Element> elements;
  for (const CheckedValue& element : list.List()) elements.push_back((element.*read)());
  return Value<tag>(std::move(elements));
}

VendorAtomValue ReadContent(Tag kind, const CheckedValue& content) {
  switch (kind) {
    case Tag::intValue:
      return Value<Tag::intValue>(content.Integer<std::int32_t>());
    case Tag::longValue:
      return Value<Tag::longValue>(content.Integer<std::int64_t>());
    case Tag::floatValue:
      return Value<Tag::floatValue>(content.Float());
    case Tag::stringValue:
      return Value<Tag::stringValue>(content.Text());
    case Tag::boolValue:
      return Value<Tag::boolValue>(content.Bool());
    case Tag::repeatedIntValue:
      return List<Tag::repeatedIntValue, std::int32_t>(content,
                                                       &CheckedValue::Integer<std::int32_t>);
    case Tag::repeatedLongValue:
      return List<Tag::repeatedLongValue, std::int64_t>(content,
                                                        &CheckedValue::Integer<std::int64_t>);
    case Tag::repeatedFloatValue:
      return List<Tag::repeatedFloatValue, float>(content, &CheckedValue::Float);
    case Tag::repeatedStringValue:
      return List<Tag::repeatedStringValue, std::optional<std::string>>(content,
                                                                        &CheckedValue::Text);
    case Tag::repeatedBoolValue:
      return List<Tag::repeatedBoolValue, bool>(content, &CheckedValue::Bool);
    case Tag::byteArrayValue:
      return List<Tag::byteArrayValue, std::uint8_t>(content, &CheckedValue::Integer<std::uint8_t>);
  }
  return {};
}

VendorAtomValue ReadValue(const CheckedValue& value) {
  const JsonValue& object = value.Object();
  const std::string expected = "one field, named after its kind: " + testkit::KindNames();
  if (object.size != 1) {
    value.Reject("has " + std::to_string(object.size) + " fields", expected);
  }
  const JsonValue& content = *object.begin();
  const std::optional<Tag> kind = testkit::FindKind(content.key);
  if (!kind) value.Reject("has the unknown field " + Quoted(content.key), expected);
  return ReadContent(*kind, CheckedValue(content, value.line()));
}

}  // namespace

VendorAtom ReadOutsideAtom(FieldReader& fields) {
  VendorAtom atom;
  atom.atomId = fields.Integer<std::int32_t>("id");
  atom.reverseDomainName = fields.OptionalText("domain");
  for (const CheckedValue& value : fields.List("values")) atom.values.push_back(ReadValue(value));
  return atom;
}

}  // namespace sensorvela::replay
