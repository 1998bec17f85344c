// The builder for a record that the library itself fills and needs no more. Internal to the
// library.
#pragma once

#include "atoms/sensor_event_atoms.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// Like `createVendorAtom`, but the atom takes the record's text and list over: each is allocated
/// once.
aidl::android::frameworks::stats::VendorAtom MoveIntoVendorAtom(HalSensorStateChanged record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
