#include "testkit/value_kinds.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sensorvela::testkit {
namespace {

using Tag = aidl::android::frameworks::stats::VendorAtomValue::Tag;

// In the order of the tags.
constexpr std::array<std::string_view, 11> kNames = {"int",     "long",  "float", "string",
                                                     "bool",    "ints",  "longs", "floats",
                                                     "strings", "bools", "bytes"};
static_assert(kNames.size() == static_cast<std::size_t>(Tag::byteArrayValue) + 1);

}  // namespace

std::string_view KindName(Tag kind) { return kNames.at(static_cast<std::size_t>(kind)); }

std::optional<Tag> FindKind(std::string_view name) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (kNames.at(i) == name) return static_cast<Tag>(i);
  }
  return std::nullopt;
}

std::string KindNames() {
  std::string names;
  for (const std::string_view name : kNames) {
    if (!names.empty()) names += ", ";
    names += name;
  }
  return names;
}

}  // namespace sensorvela::testkit
