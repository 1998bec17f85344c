// The simulated platform's stand-in for the stats service's published enumeration.
#pragma once

#include <cstdint>
#include <iterator>
#include <string>

namespace aidl::android::frameworks::stats {

enum class AnnotationId : std::int32_t {
  UNKNOWN = 0,
  IS_UID = 1,
  TRUNCATE_TIMESTAMP = 2,
  PRIMARY_FIELD = 3,
  EXCLUSIVE_STATE = 4,
  PRIMARY_FIELD_FIRST_UID = 5,
  DEFAULT_STATE = 6,
  TRIGGER_STATE_RESET = 7,
  STATE_NESTED = 8,
  RESTRICTION_CATEGORY = 9,
  FIELD_RESTRICTION_PERIPHERAL_DEVICE_INFO = 10,
  FIELD_RESTRICTION_APP_USAGE = 11,
  FIELD_RESTRICTION_APP_ACTIVITY = 12,
  FIELD_RESTRICTION_HEALTH_CONNECT = 13,
  FIELD_RESTRICTION_ACCESSIBILITY = 14,
  FIELD_RESTRICTION_SYSTEM_SEARCH = 15,
  FIELD_RESTRICTION_USER_ENGAGEMENT = 16,
  FIELD_RESTRICTION_AMBIENT_SENSING = 17,
  FIELD_RESTRICTION_DEMOGRAPHIC_CLASSIFICATION = 18,
};

/// The enumerator's name, or the number of one that has none.
[[nodiscard]] inline std::string toString(AnnotationId id) {
  static constexpr const char* kNames[] = {"UNKNOWN",
                                           "IS_UID",
                                           "TRUNCATE_TIMESTAMP",
                                           "PRIMARY_FIELD",
                                           "EXCLUSIVE_STATE",
                                           "PRIMARY_FIELD_FIRST_UID",
                                           "DEFAULT_STATE",
                                           "TRIGGER_STATE_RESET",
                                           "STATE_NESTED",
                                           "RESTRICTION_CATEGORY",
                                           "FIELD_RESTRICTION_PERIPHERAL_DEVICE_INFO",
                                           "FIELD_RESTRICTION_APP_USAGE",
                                           "FIELD_RESTRICTION_APP_ACTIVITY",
                                           "FIELD_RESTRICTION_HEALTH_CONNECT",
                                           "FIELD_RESTRICTION_ACCESSIBILITY",
                                           "FIELD_RESTRICTION_SYSTEM_SEARCH",
                                           "FIELD_RESTRICTION_USER_ENGAGEMENT",
                                           "FIELD_RESTRICTION_AMBIENT_SENSING",
                                           "FIELD_RESTRICTION_DEMOGRAPHIC_CLASSIFICATION"};
  const auto index = static_cast<std::uint32_t>(id);
  return index < std::size(kNames) ? kNames[index] : std::to_string(static_cast<std::int32_t>(id));
}

}  // namespace aidl::android::frameworks::stats
