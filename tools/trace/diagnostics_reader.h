// What a diagnostics supplier answers, as a trace has it.
#pragma once

#include <sensorvela/testkit/diagnostics.h>

#include "tools/trace/field_reader.h"

namespace sensorvela::replay {

/// Throws `EventError` for an item that such a supplier is never asked for.
testkit::Diagnostics ReadDiagnostics(FieldReader& fields, testkit::SupplierKind supplier);

}  // namespace sensorvela::replay
