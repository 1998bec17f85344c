// The names of the kinds of value that an atom can have.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtomValue.h>

#include <optional>
#include <string>
#include <string_view>

namespace sensorvela::testkit {

std::string_view KindName(aidl::android::frameworks::stats::VendorAtomValue::Tag kind);

std::optional<aidl::android::frameworks::stats::VendorAtomValue::Tag> FindKind(
    std::string_view name);

/// All kinds' names in one text, for a message.
std::string KindNames();

}  // namespace sensorvela::testkit
