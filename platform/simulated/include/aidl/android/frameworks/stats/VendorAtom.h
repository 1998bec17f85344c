// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <aidl/android/frameworks/stats/Annotation.h>
#include <aidl/android/frameworks/stats/AnnotationSet.h>
#include <aidl/android/frameworks/stats/VendorAtomValue.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace aidl::android::frameworks::stats {

struct VendorAtom {
  std::string reverseDomainName;
  std::int32_t atomId = 0;
  std::vector<VendorAtomValue> values;
  std::optional<std::vector<std::optional<AnnotationSet>>> valuesAnnotations;
  std::optional<std::vector<std::optional<Annotation>>> atomAnnotations;

  bool operator==(const VendorAtom& other) const {
    return reverseDomainName == other.reverseDomainName && atomId == other.atomId &&
           values == other.values && valuesAnnotations == other.valuesAnnotations &&
           atomAnnotations == other.atomAnnotations;
  }
  bool operator!=(const VendorAtom& other) const { return !(*this == other); }
};

}  // namespace aidl::android::frameworks::stats
