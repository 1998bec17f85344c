// A run in columns, for a reader.
#pragma once

#include <memory>
#include <ostream>

#include "tools/run/run_observer.h"

namespace sensorvela::replay {

/// Writes onto `out`, which outlives the report: a line for each thing that happens, and at the end
/// a summary. Control characters are escaped.
std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out);

}  // namespace sensorvela::replay
