#include "atoms/standalone_atoms.h"

#include "atoms/build_vendor_atom.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

using aidl::android::frameworks::stats::VendorAtom;

VendorAtom createVendorAtom(const HingeAngleStateChanged& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2);
}

VendorAtom createVendorAtom(const TarnServerWorkerUsageReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5);
}

VendorAtom createVendorAtom(const HingeHallSensorTriggered& r) {
  return BuildVendorAtom(r, r.value_1);
}

VendorAtom createVendorAtom(const AlsLuxLevelDistributionReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6,
                         r.value_7, r.value_8, r.value_9, r.value_10, r.value_11, r.value_12,
                         r.value_13, r.value_14, r.value_15, r.value_16);
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
