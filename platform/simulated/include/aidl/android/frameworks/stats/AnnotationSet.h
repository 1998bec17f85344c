// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <aidl/android/frameworks/stats/Annotation.h>
#include <aidl/android/frameworks/stats/to_string.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace aidl::android::frameworks::stats {

class AnnotationSet {
 public:
  std::int32_t valueIndex = 0;
  std::vector<Annotation> annotations;

 private:
  auto Key() const { return std::tie(valueIndex, annotations); }

 public:
  bool operator==(const AnnotationSet& other) const { return Key() == other.Key(); }
  bool operator!=(const AnnotationSet& other) const { return Key() != other.Key(); }
  bool operator<(const AnnotationSet& other) const { return Key() < other.Key(); }
  bool operator<=(const AnnotationSet& other) const { return Key() <= other.Key(); }
  bool operator>(const AnnotationSet& other) const { return Key() > other.Key(); }
  bool operator>=(const AnnotationSet& other) const { return Key() >= other.Key(); }

  /// For a message, with the members' names.
  std::string toString() const {
    using sensorvela::simulated::ToString;
    return "AnnotationSet{valueIndex: " + ToString(valueIndex) +
           ", annotations: " + ToString(annotations) + "}";
  }
};

}  // namespace aidl::android::frameworks::stats
