// The simulated platform's stand-in for the stats service's published enumeration.
#pragma once

#include <cstdint>

namespace aidl::android::frameworks::stats {

/// The device names further enumerators, up to 18. A number works on both sides: `AnnotationId{1}`.
enum class AnnotationId : std::int32_t {
  UNKNOWN = 0,
};

}  // namespace aidl::android::frameworks::stats
