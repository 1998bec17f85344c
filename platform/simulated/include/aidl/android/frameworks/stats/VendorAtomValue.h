// The simulated platform's stand-in for the stats service's published union, in the shape that the
// platform's interface compiler gives every union.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace aidl::android::frameworks::stats {

class VendorAtomValue {
 public:
  enum class Tag : std::int32_t {
    intValue = 0,
    longValue = 1,
    floatValue = 2,
    stringValue = 3,
    boolValue = 4,
    repeatedIntValue = 5,
    repeatedLongValue = 6,
    repeatedFloatValue = 7,
    repeatedStringValue = 8,
    repeatedBoolValue = 9,
    byteArrayValue = 10,
  };
  static constexpr Tag intValue = Tag::intValue;
  static constexpr Tag longValue = Tag::longValue;
  static constexpr Tag floatValue = Tag::floatValue;
  static constexpr Tag stringValue = Tag::stringValue;
  static constexpr Tag boolValue = Tag::boolValue;
  static constexpr Tag repeatedIntValue = Tag::repeatedIntValue;
  static constexpr Tag repeatedLongValue = Tag::repeatedLongValue;
  static constexpr Tag repeatedFloatValue = Tag::repeatedFloatValue;
  static constexpr Tag repeatedStringValue = Tag::repeatedStringValue;
  static constexpr Tag repeatedBoolValue = Tag::repeatedBoolValue;
  static constexpr Tag byteArrayValue = Tag::byteArrayValue;

  /// An int of 0.
  VendorAtomValue() = default;

  template <std::size_t index, typename... Args>
  constexpr explicit VendorAtomValue(std::in_place_index_t<index> at, Args&&... args)
      : value_(at, std::forward<Args>(args)...) {}

  template <Tag tag, typename... Args>
  static VendorAtomValue make(Args&&... args) {
    return VendorAtomValue(std::in_place_index<static_cast<std::size_t>(tag)>,
                           std::forward<Args>(args)...);
  }

  Tag getTag() const { return static_cast<Tag>(value_.index()); }

  /// Aborts when the value holds another alternative.
  template <Tag tag>
  const auto& get() const {
    if (getTag() != tag) std::abort();
    return *std::get_if<static_cast<std::size_t>(tag)>(&value_);
  }

  template <Tag tag, typename... Args>
  void set(Args&&... args) {
    value_.template emplace<static_cast<std::size_t>(tag)>(std::forward<Args>(args)...);
  }

  bool operator==(const VendorAtomValue& other) const { return value_ == other.value_; }
  bool operator!=(const VendorAtomValue& other) const { return value_ != other.value_; }

 private:
  std::variant<std::int32_t, std::int64_t, float, std::string, bool,
               std::optional<std::vector<std::int32_t>>, std::optional<std::vector<std::int64_t>>,
               std::optional<std::vector<float>>,
               std::optional<std::vector<std::optional<std::string>>>,
               std::optional<std::vector<bool>>, std::optional<std::vector<std::uint8_t>>>
      value_;
};

}  // namespace aidl::android::frameworks::stats
