// The builders for the records with lists that the library itself fills and needs no more. Internal
// to the library.
#pragma once

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// Like `createVendorAtom`, but the atom takes the record's lists over: each is allocated once.
aidl::android::frameworks::stats::VendorAtom MoveIntoVendorAtom(HalSensorStateChanged record);
aidl::android::frameworks::stats::VendorAtom MoveIntoVendorAtom(
    SensorMemoryServiceabilityStatsReported record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
