#include "atoms/build_vendor_atom.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

VendorAtom MakeVendorAtom(std::int32_t atom_id, const std::string& reverse_domain_name,
                          std::size_t value_count) {
  return {.reverseDomainName = reverse_domain_name,
          .atomId = atom_id,
          .values = std::vector<VendorAtomValue>(value_count),
          .valuesAnnotations = {},
          .atomAnnotations = {}};
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
