// Reads what an event's fields give as records: an atom, and what the supplier answers.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <sensorvela/testkit/diagnostics.h>

#include "tools/trace/field_reader.h"

namespace sensorvela::tools {

/// An atom that the library did not build, but another component of the host's process. It may have
/// values of every kind and need not agree with the catalogue.
aidl::android::frameworks::stats::VendorAtom ReadOutsideAtom(FieldReader& fields);

/// Throws `EventError` for an item that the engine never gets from such a supplier.
testkit::Diagnostics ReadDiagnostics(FieldReader& fields, testkit::SupplierKind supplier);

}  // namespace sensorvela::tools
