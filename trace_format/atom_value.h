// The kinds of value that an atom can have: their names, and a value's content by its kind.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtomValue.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace sensorvela::trace_format {

using aidl::android::frameworks::stats::VendorAtomValue;
using ValueKind = VendorAtomValue::Tag;

/// In the order of the kinds.
inline constexpr std::array<std::string_view, 11> kKindNames = {
    "int",   "long",   "float",   "string", "bool", "ints",
    "longs", "floats", "strings", "bools",  "bytes"};
static_assert(kKindNames.size() == static_cast<std::size_t>(ValueKind::byteArrayValue) + 1);

/// Calls `body.operator()<kind>()` if `kind` is `tried` or a later one of those above.
template <ValueKind tried = ValueKind::intValue, typename Body>
void WithKind(ValueKind kind, const Body& body) {
  if (kind == tried) {
    body.template operator()<tried>();
  } else if constexpr (tried != ValueKind::byteArrayValue) {
    WithKind<static_cast<ValueKind>(static_cast<std::size_t>(tried) + 1)>(kind, body);
  }
}

/// Calls `visit` with the value's content and its kind's name, if its kind is one of those above.
template <typename Visit>
void VisitValue(const VendorAtomValue& value, const Visit& visit) {
  WithKind(value.getTag(), [&]<ValueKind kind>() {
    visit(value.get<kind>(), kKindNames[static_cast<std::size_t>(kind)]);
  });
}

}  // namespace sensorvela::trace_format
