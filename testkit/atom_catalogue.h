// The names of the atoms, and the names, kinds and meanings of their values.
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
  /// Meaning and unit; empty where only the atom's producer defines them.
  std::string_view meaning;
};

struct AtomInfo {
  std::int32_t id;
  std::string_view name;
  std::vector<ValueInfo> values;
};

/// Every atom that the library can build, by ascending identifier.
const std::vector<AtomInfo>& AtomCatalogue();

/// The atom with this identifier; null if the library has none.
const AtomInfo* FindAtom(std::int32_t id);

/// The name of the atom with this identifier, or `atom 42` if the catalogue does not have it.
std::string NameOfAtom(std::int32_t id);
std::string AtomName(const aidl::android::frameworks::stats::VendorAtom& atom);

/// The name of the value at `index`, counted from 0; `value_1`, `value_2`, ... where the catalogue
/// has no name.
std::string ValueName(const aidl::android::frameworks::stats::VendorAtom& atom, std::size_t index);

/// The atom's value with this name; null when the catalogue has no such value or the atom has too
/// few values. Points into `atom`.
const aidl::android::frameworks::stats::VendorAtomValue* FindValue(
    const aidl::android::frameworks::stats::VendorAtom& atom, std::string_view name);

}  // namespace sensorvela::testkit
