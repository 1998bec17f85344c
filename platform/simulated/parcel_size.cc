#include "platform/simulated/parcel_size.h"

#include <aidl/android/frameworks/stats/IStats.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace sensorvela::simulated {
namespace {

using aidl::android::frameworks::stats::Annotation;
using aidl::android::frameworks::stats::AnnotationSet;
using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using Tag = VendorAtomValue::Tag;

/// What a number of up to 32 bits, a bool, a length, a tag or the mark of a null takes.
constexpr std::size_t kWord = 4;
/// The driver's own unit.
constexpr std::size_t kDriverWord = 8;

std::size_t RoundedUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

/// In UTF-16.
std::size_t UnitsOf(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool begins_character = (byte & 0xC0) != 0x80;
    const bool has_two_units = byte >= 0xF0;
    units += (begins_character ? 1U : 0U) + (has_two_units ? 1U : 0U);
  }
  return units;
}

template <typename T>
constexpr bool kIsList = false;
template <typename T>
constexpr bool kIsList<std::vector<T>> = true;
template <typename T>
constexpr bool kIsOptional = false;
template <typename T>
constexpr bool kIsOptional<std::optional<T>> = true;

/// One template for all types: a union would be made of any of its alternatives.
template <typename T>
std::size_t BytesOf(const T& value);

constexpr std::size_t kTags = static_cast<std::size_t>(Tag::byteArrayValue) + 1;

template <std::size_t... tags>
std::size_t ContentBytes(const VendorAtomValue& value, std::index_sequence<tags...>) {
  std::size_t bytes = 0;
  ((value.getTag() == Tag{tags} ? void(bytes = BytesOf(value.get<Tag{tags}>())) : void()), ...);
  return bytes;
}

/// A union or an annotation also has a word that says whether it is there.
template <typename T>
std::size_t BytesOf(const T& value) {
  if constexpr (kIsOptional<T>) {
    return value ? BytesOf(*value) : kWord;
  } else if constexpr (std::is_same_v<T, std::string>) {
    // The length, and the text with a zero at its end.
    return kWord + RoundedUp(2 * (UnitsOf(value) + 1), kWord);
  } else if constexpr (std::is_same_v<T, std::vector<std::uint8_t>>) {
    return kWord + RoundedUp(value.size(), kWord);
  } else if constexpr (kIsList<T>) {
    std::size_t bytes = kWord;
    for (const auto& element : value) {
      bytes += BytesOf(static_cast<const T::value_type&>(element));
    }
    return bytes;
  } else if constexpr (std::is_same_v<T, VendorAtomValue>) {
    return kWord + kWord + ContentBytes(value, std::make_index_sequence<kTags>());
  } else if constexpr (std::is_same_v<T, Annotation>) {
    // Its size, its name, and a union of a word.
    return kWord + 2 * kWord + 3 * kWord;
  } else if constexpr (std::is_same_v<T, AnnotationSet>) {
    // Its size and the index.
    return kWord + 2 * kWord + BytesOf(value.annotations);
  } else {
    return std::max(sizeof(T), kWord);
  }
}

}  // namespace

std::size_t ReportBytes(const VendorAtom& atom) {
  // Three words of the system's and the interface's name.
  const std::size_t header = 3 * kWord + BytesOf(std::string(IStats::descriptor));
  // Whether it is there, and its size.
  const std::size_t atom_header = 2 * kWord;
  return RoundedUp(header + atom_header + BytesOf(atom.reverseDomainName) + BytesOf(atom.atomId) +
                       BytesOf(atom.values) + BytesOf(atom.valuesAnnotations) +
                       BytesOf(atom.atomAnnotations),
                   kDriverWord);
}

}  // namespace sensorvela::simulated
