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

enum class AnnotationValueTag : std::int32_t {
  intValue = 0,
  boolValue = 1,
};

class AnnotationValue
    : public sensorvela::simulated::GeneratedUnion<AnnotationValue, AnnotationValueTag,
                                                   std::int32_t, bool> {
 public:
  using GeneratedUnion::GeneratedUnion;

  static constexpr Tag intValue = Tag::intValue;
  static constexpr Tag boolValue = Tag::boolValue;

  bool operator==(const AnnotationValue& other) const { return value_ == other.value_; }
  bool operator!=(const AnnotationValue& other) const { return value_ != other.value_; }
  bool operator<(const AnnotationValue& other) const { return value_ < other.value_; }
  bool operator<=(const AnnotationValue& other) const { return value_ <= other.value_; }
  bool operator>(const AnnotationValue& other) const { return value_ > other.value_; }
  bool operator>=(const AnnotationValue& other) const { return value_ >= other.value_; }

  /// For a message, with the alternative's name.
  std::string toString() const {
    static constexpr const char* kNames[] = {"intValue", "boolValue"};
    const std::string content =
        std::visit([](const auto& held) { return sensorvela::simulated::ToString(held); }, value_);
    return "AnnotationValue{" + std::string(kNames[value_.index()]) + ": " + content + "}";
  }
};

}  // namespace aidl::android::frameworks::stats
