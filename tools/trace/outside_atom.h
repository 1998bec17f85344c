// An atom that the library did not build: from another component of the host's process.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include "tools/trace/field_reader.h"

namespace sensorvela::replay {

/// Every kind of value is possible, and nothing need agree with the catalogue.
aidl::android::frameworks::stats::VendorAtom ReadOutsideAtom(FieldReader& fields);

}  // namespace sensorvela::replay
