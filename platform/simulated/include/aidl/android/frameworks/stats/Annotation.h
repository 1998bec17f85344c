// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <aidl/android/frameworks/stats/AnnotationId.h>
#include <aidl/android/frameworks/stats/AnnotationValue.h>
#include <aidl/android/frameworks/stats/to_string.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace aidl::android::frameworks::stats {

class Annotation {
 public:
  AnnotationId annotationId = AnnotationId::UNKNOWN;
  AnnotationValue value;

 private:
  auto Key() const { return std::tie(annotationId, value); }

 public:
  bool operator==(const Annotation& other) const { return Key() == other.Key(); }
  bool operator!=(const Annotation& other) const { return Key() != other.Key(); }
  bool operator<(const Annotation& other) const { return Key() < other.Key(); }
  bool operator<=(const Annotation& other) const { return Key() <= other.Key(); }
  bool operator>(const Annotation& other) const { return Key() > other.Key(); }
  bool operator>=(const Annotation& other) const { return Key() >= other.Key(); }

  /// For a message, with the members' names.
  std::string toString() const {
    using sensorvela::simulated::ToString;
    return "Annotation{annotationId: " + ToString(annotationId) + ", value: " + ToString(value) +
           "}";
  }
};

}  // namespace aidl::android::frameworks::stats
