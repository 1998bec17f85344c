// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <aidl/android/frameworks/stats/Annotation.h>

#include <cstdint>
#include <vector>

namespace aidl::android::frameworks::stats {

struct AnnotationSet {
  std::int32_t valueIndex = 0;
  std::vector<Annotation> annotations;

  bool operator==(const AnnotationSet& other) const {
    return valueIndex == other.valueIndex && annotations == other.annotations;
  }
};

}  // namespace aidl::android::frameworks::stats
