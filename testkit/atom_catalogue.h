// What each atom and each of its values is called, and what the values mean.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sensorvela::testkit {

struct ValueInfo {
  std::string_view name;
  aidl::android::frameworks::stats::VendorAtomValue::Tag kind;
  /// Meaning and unit; empty where the atom's producer alone defines them.
  std::string_view meaning;
};

struct AtomInfo {
  std::int32_t id;
  std::string_view name;
  std::vector<ValueInfo> values;
};

/// Every atom that the library can build, by ascending identifier.
const std::vector<AtomInfo>& AtomCatalogue();

/// Null for an identifier that is not the library's.
const AtomInfo* FindAtom(std::int32_t id);

/// The atom's name, or `atom 42` for an identifier that is not the library's.
std::string AtomName(const aidl::android::frameworks::stats::VendorAtom& atom);

/// The name of the value at that position, counted from 0; `value_1`, `value_2`, ... where the
/// catalogue has none.
std::string ValueName(const aidl::android::frameworks::stats::VendorAtom& atom, std::size_t index);

/// The atom's value of that name; null when the catalogue knows none or the atom is too short.
const aidl::android::frameworks::stats::VendorAtomValue* FindValue(
    const aidl::android::frameworks::stats::VendorAtom& atom, std::string_view name);

}  // namespace sensorvela::testkit
