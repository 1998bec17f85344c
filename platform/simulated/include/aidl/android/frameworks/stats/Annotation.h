// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <cstdint>
#include <variant>

namespace aidl::android::frameworks::stats {

struct Annotation {
  std::int32_t annotationId = 0;
  std::variant<bool, std::int32_t> value;

  bool operator==(const Annotation& other) const {
    return annotationId == other.annotationId && value == other.value;
  }
};

}  // namespace aidl::android::frameworks::stats
