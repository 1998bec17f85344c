// The simulated platform's stand-in for the stats service's published union.
#pragma once

#include <aidl/android/frameworks/stats/generated_union.h>
#include <aidl/android/frameworks/stats/to_string.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace aidl::android::frameworks::stats {

enum class VendorAtomValueTag : std::int32_t {
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

class VendorAtomValue
    : public sensorvela::simulated::GeneratedUnion<
          VendorAtomValue, VendorAtomValueTag, std::int32_t, std::int64_t, float, std::string, bool,
          std::optional<std::vector<std::int32_t>>, std::optional<std::vector<std::int64_t>>,
          std::optional<std::vector<float>>, std::optional<std::vector<std::optional<std::string>>>,
          std::optional<std::vector<bool>>, std::optional<std::vector<std::uint8_t>>> {
 public:
  using GeneratedUnion::GeneratedUnion;
  VendorAtomValue() {}  // NOLINT(modernize-use-equals-default)

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

  bool operator==(const VendorAtomValue& other) const { return value_ == other.value_; }
  bool operator!=(const VendorAtomValue& other) const { return value_ != other.value_; }
  bool operator<(const VendorAtomValue& other) const { return value_ < other.value_; }
  bool operator<=(const VendorAtomValue& other) const { return value_ <= other.value_; }
  bool operator>(const VendorAtomValue& other) const { return value_ > other.value_; }
  bool operator>=(const VendorAtomValue& other) const { return value_ >= other.value_; }

  /// For a message, with the alternative's name.
  std::string toString() const {
    static constexpr const char* kNames[] = {
        "intValue",          "longValue",          "floatValue",
        "stringValue",       "boolValue",          "repeatedIntValue",
        "repeatedLongValue", "repeatedFloatValue", "repeatedStringValue",
        "repeatedBoolValue", "byteArrayValue"};
    const std::string content =
        std::visit([](const auto& held) { return sensorvela::simulated::ToString(held); }, value_);
    return "VendorAtomValue{" + std::string(kNames[value_.index()]) + ": " + content + "}";
  }
};

}  // namespace aidl::android::frameworks::stats
