#include "testkit/value_kinds.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "trace_format/atom_value.h"

namespace sensorvela::testkit {

using trace_format::kKindNames;
using Tag = trace_format::ValueKind;

std::string_view KindName(Tag kind) { return kKindNames.at(static_cast<std::size_t>(kind)); }

std::optional<Tag> FindKind(std::string_view name) {
  for (std::size_t i = 0; i < kKindNames.size(); ++i) {
    if (kKindNames.at(i) == name) return static_cast<Tag>(i);
  }
  return std::nullopt;
}

std::string KindNames() {
  std::string names;
  for (const std::string_view name : kKindNames) {
    if (!names.empty()) names += ", ";
    names += name;
  }
  return names;
}

}  // namespace sensorvela::testkit
