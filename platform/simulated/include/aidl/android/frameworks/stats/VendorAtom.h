// The simulated platform's stand-in for the stats service's published type.
#pragma once

#include <aidl/android/frameworks/stats/Annotation.h>
#include <aidl/android/frameworks/stats/AnnotationSet.h>
#include <aidl/android/frameworks/stats/VendorAtomValue.h>
#include <aidl/android/frameworks/stats/to_string.h>

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace aidl::android::frameworks::stats {

class VendorAtom {
 public:
  std::string reverseDomainName;
  std::int32_t atomId = 0;
  std::vector<VendorAtomValue> values;
  std::optional<std::vector<std::optional<AnnotationSet>>> valuesAnnotations;
  std::optional<std::vector<std::optional<Annotation>>> atomAnnotations;

 private:
  auto Key() const {
    return std::tie(reverseDomainName, atomId, values, valuesAnnotations, atomAnnotations);
  }

 public:
  bool operator==(const VendorAtom& other) const { return Key() == other.Key(); }
  bool operator!=(const VendorAtom& other) const { return Key() != other.Key(); }
  bool operator<(const VendorAtom& other) const { return Key() < other.Key(); }
  bool operator<=(const VendorAtom& other) const { return Key() <= other.Key(); }
  bool operator>(const VendorAtom& other) const { return Key() > other.Key(); }
  bool operator>=(const VendorAtom& other) const { return Key() >= other.Key(); }

  /// For a message, with the members' names.
  std::string toString() const {
    using sensorvela::simulated::ToString;
    return "VendorAtom{reverseDomainName: " + ToString(reverseDomainName) +
           ", atomId: " + ToString(atomId) + ", values: " + ToString(values) +
           ", valuesAnnotations: " + ToString(valuesAnnotations) +
           ", atomAnnotations: " + ToString(atomAnnotations) + "}";
  }
};

}  // namespace aidl::android::frameworks::stats
