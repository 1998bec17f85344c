// Builders that move a record's lists into the atom, for the records with lists that the library
// itself fills. Internal to the library.
#pragma once

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// Like `createVendorAtom`, but moves the record's lists into the atom, so that each list is
/// allocated only once.
aidl::android::frameworks::stats::VendorAtom MoveIntoVendorAtom(HalSensorStateChanged record);
aidl::android::frameworks::stats::VendorAtom MoveIntoVendorAtom(
    SensorMemoryServiceabilityStatsReported record);

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
