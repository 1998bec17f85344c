// An atom as a line of text. Of its own, so that a test on the device can include it.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace sensorvela::testing {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

inline std::string ShowFloat(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  return std::isnan(value) ? "nan" + std::to_string(std::bit_cast<std::uint32_t>(value)) : text;
}

inline std::string ShowValue(const VendorAtomValue& value) {
  switch (value.getTag()) {
    case VendorAtomValue::intValue:
      return "i" + std::to_string(value.get<VendorAtomValue::intValue>());
    case VendorAtomValue::longValue:
      return "l" + std::to_string(value.get<VendorAtomValue::longValue>());
    case VendorAtomValue::floatValue:
      return "f" + ShowFloat(value.get<VendorAtomValue::floatValue>());
    case VendorAtomValue::boolValue:
      return value.get<VendorAtomValue::boolValue>() ? "true" : "false";
    case VendorAtomValue::repeatedIntValue: {
      const auto& list = value.get<VendorAtomValue::repeatedIntValue>();
      if (!list) return "absent";
      std::string text = "[";
      for (const std::int32_t element : *list) text += " " + std::to_string(element);
      return text + " ]";
    }
    default:
      return "other";
  }
}

/// An atom in one line, to the bit: identifier, domain if any, then each value after a letter for
/// its kind.
inline std::string Show(const VendorAtom& atom) {
  std::string text = std::to_string(atom.atomId) + atom.reverseDomainName;
  for (const VendorAtomValue& value : atom.values) text += " " + ShowValue(value);
  if (atom.valuesAnnotations || atom.atomAnnotations) text += " annotated";
  return text;
}

}  // namespace sensorvela::testing
