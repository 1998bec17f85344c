// The function that every atom builder calls.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// Converts a record's member to a value. The member's type determines the value's kind; its bits
/// are unchanged. A list passed as an rvalue is moved.
template <typename Member>
aidl::android::frameworks::stats::VendorAtomValue ToValue(Member&& member) {
  using aidl::android::frameworks::stats::VendorAtomValue;
  using Type = std::remove_cvref_t<Member>;
  if constexpr (std::is_enum_v<Type>) {
    static_assert(sizeof(Type) == sizeof(std::int32_t), "enumerations travel as 32 bits");
    return ToValue(static_cast<std::underlying_type_t<Type>>(member));
  } else if constexpr (std::is_same_v<Type, std::int32_t>) {
    return VendorAtomValue::make<VendorAtomValue::intValue>(member);
  } else if constexpr (std::is_same_v<Type, std::int64_t>) {
    return VendorAtomValue::make<VendorAtomValue::longValue>(member);
  } else if constexpr (std::is_same_v<Type, float>) {
    return VendorAtomValue::make<VendorAtomValue::floatValue>(member);
  } else if constexpr (std::is_same_v<Type, bool>) {
    return VendorAtomValue::make<VendorAtomValue::boolValue>(member);
  } else {
    static_assert(std::is_same_v<Type, std::vector<std::int32_t>>, "no value kind for this type");
    return VendorAtomValue::make<VendorAtomValue::repeatedIntValue>(std::forward<Member>(member));
  }
}

/// An atom with `value_count` values, ints of 0, and no annotations. Allocates the values once, at
/// their exact size.
aidl::android::frameworks::stats::VendorAtom MakeVendorAtom(std::int32_t atom_id,
                                                            const std::string& reverse_domain_name,
                                                            std::size_t value_count);

/// The record's atom, with one value for each member, in the order given, and no annotations.
///
/// The code common to all builders is in `MakeVendorAtom`, so that a builder only stores its
/// values.
template <typename Record, typename... Members>
[[gnu::always_inline]] inline aidl::android::frameworks::stats::VendorAtom BuildVendorAtom(
    const Record& record, Members&&... members) {
  using aidl::android::frameworks::stats::VendorAtomValue;
  auto atom = MakeVendorAtom(Record::kAtomId, record.reverse_domain_name, sizeof...(members));
  VendorAtomValue* value = atom.values.data();
  // An int of 0 owns nothing, so the new value is constructed in its place without destroying it.
  (::new (static_cast<void*>(value++)) VendorAtomValue(ToValue(std::forward<Members>(members))),
   ...);
  return atom;
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
