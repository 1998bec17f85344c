// Reads an atom that the library did not build, but another component of the host's process.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include "tools/trace/field_reader.h"

namespace sensorvela::tools {

/// The atom may have values of every kind and need not agree with the catalogue.
aidl::android::frameworks::stats::VendorAtom ReadOutsideAtom(FieldReader& fields);

}  // namespace sensorvela::tools
