#include "tools/trace/outside_atom.h"

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/testkit/value_kinds.h>

#include "tools/text/printable_text.h"
#include "trace_format/atom_value.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace field = trace_format::field;

namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using Tag = trace_format::ValueKind;

void Read(const CheckedValue& value, bool& content) { content = value.Bool(); }
void Read(const CheckedValue& value, float& content) { content = value.Float(); }
void Read(const CheckedValue& value, std::string& content) { content = value.Text(); }
template <std::integral Int>
void Read(const CheckedValue& value, Int& content) {
  content = value.Integer<Int>();
}
template <typename Element>
void Read(const CheckedValue& value, std::vector<Element>& content);
template <typename Content>
void Read(const CheckedValue& value, std::optional<Content>& content) {
  Read(value, content.emplace());
}
template <typename Element>
void Read(const CheckedValue& value, std::vector<Element>& content) {
  for (const CheckedValue& element : value.List()) {
    Element read{};
    Read(element, read);
    content.push_back(std::move(read));
  }
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
  VendorAtomValue result;
  trace_format::WithKind(*kind, [&]<Tag tag>() {
    result.set<tag>();
    Read(CheckedValue(content, value.line()), result.get<tag>());
  });
  return result;
}

}  // namespace

VendorAtom ReadOutsideAtom(FieldReader& fields) {
  VendorAtom atom;
  atom.atomId = fields.Integer<std::int32_t>(field::kId);
  atom.reverseDomainName = fields.OptionalText(field::kDomain);
  for (const CheckedValue& value : fields.List(field::kValues)) {
    atom.values.push_back(ReadValue(value));
  }
  return atom;
}

}  // namespace sensorvela::tools
