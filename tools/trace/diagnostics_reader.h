// Reads a diagnostics event of a trace: what the supplier returns.
#pragma once

#include <sensorvela/testkit/diagnostics.h>

#include "tools/trace/field_reader.h"

namespace sensorvela::tools {

/// Throws `EventError` for an item that the engine never gets from such a supplier.
testkit::Diagnostics ReadDiagnostics(FieldReader& fields, testkit::SupplierKind supplier);

}  // namespace sensorvela::tools
