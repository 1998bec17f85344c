// Reads the contents of events that are more than a few numbers: atoms, the answers of a supplier,
// and samples.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <vector>

#include <sensorvela/testkit/diagnostics.h>

#include "tools/run/sample_trains.h"
#include "tools/trace/field_reader.h"
#include "trace_format/sample.h"

namespace sensorvela::tools {

/// An atom that the library did not build, but another component of the host's process. It may have
/// values of every kind and need not agree with the catalogue.
aidl::android::frameworks::stats::VendorAtom ReadOutsideAtom(FieldReader& fields);

/// Throws `EventError` for an item that the engine never gets from such a supplier.
testkit::Diagnostics ReadDiagnostics(FieldReader& fields, testkit::SupplierKind supplier);

/// Throws `EventError` for a train that lasts so long that its times could overflow.
SampleTrain ReadSampleTrain(FieldReader& fields);

/// The samples of all lists of a recording's event, in the order of their arrival; of those that
/// arrive together, the sample of the earlier list first. `at_ns` is the event's instant. Throws
/// `EventError` for a list that is not as docs/trace-format.md says.
std::vector<trace_format::Sample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns);

}  // namespace sensorvela::tools
