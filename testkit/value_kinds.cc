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
  const auto* const found = std::ranges::find(kKindNames, name);
  if (found == kKindNames.end()) return std::nullopt;
  return static_cast<Tag>(found - kKindNames.begin());
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
