// How many bytes a report takes in the buffer of the service's process. Internal to the simulated
// platform.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstddef>

namespace sensorvela::simulated {

/// The bytes of a report of `atom`, as the code that the interface compiler generates writes it
/// into a parcel, in whole words of the driver.
std::size_t ReportBytes(const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela::simulated
