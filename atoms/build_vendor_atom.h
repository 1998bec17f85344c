// The one construction that every atom builder is made of.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// The value that a record's member becomes: its type fixes the kind, its bits are carried
/// unchanged.
template <typename Member>
aidl::android::frameworks::stats::VendorAtomValue ToValue(const Member& member) {
  using aidl::android::frameworks::stats::VendorAtomValue;
  if constexpr (std::is_enum_v<Member>) {
    static_assert(sizeof(Member) == sizeof(std::int32_t), "enumerations travel as 32 bits");
    return ToValue(static_cast<std::underlying_type_t<Member>>(member));
  } else if constexpr (std::is_same_v<Member, std::int32_t>) {
    return VendorAtomValue::make<VendorAtomValue::intValue>(member);
  } else if constexpr (std::is_same_v<Member, std::int64_t>) {
    return VendorAtomValue::make<VendorAtomValue::longValue>(member);
  } else if constexpr (std::is_same_v<Member, float>) {
    return VendorAtomValue::make<VendorAtomValue::floatValue>(member);
  } else if constexpr (std::is_same_v<Member, bool>) {
    return VendorAtomValue::make<VendorAtomValue::boolValue>(member);
  } else {
    static_assert(std::is_same_v<Member, std::vector<std::int32_t>>, "no value kind for this type");
    return VendorAtomValue::make<VendorAtomValue::repeatedIntValue>(std::optional(member));
  }
}

/// An atom with one value for each member, in the order given, and no annotations.
template <typename... Members>
aidl::android::frameworks::stats::VendorAtom BuildVendorAtom(std::int32_t atom_id,
                                                             const std::string& reverse_domain_name,
                                                             const Members&... members) {
  aidl::android::frameworks::stats::VendorAtom atom;
  atom.atomId = atom_id;
  atom.reverseDomainName = reverse_domain_name;
  atom.values.reserve(sizeof...(members));
  (atom.values.push_back(ToValue(members)), ...);
  return atom;
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
