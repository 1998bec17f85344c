// What each atom's values are called and mean: the names that the tool prints.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace sensorvela::replay {

struct ValueInfo {
  std::string_view name;
  aidl::android::frameworks::stats::VendorAtomValue::Tag kind;
  /// Meaning and unit; empty where the atom's producer alone defines them.
  std::string_view meaning;
};

struct AtomInfo {
  std::int32_t id;
  std::string_view name;
  std::span<const ValueInfo> values;
};

/// Every atom that the library can build, by ascending identifier.
std::span<const AtomInfo> AtomCatalogue();

/// Null for an identifier that is not the library's.
const AtomInfo* FindAtom(std::int32_t id);

}  // namespace sensorvela::replay
