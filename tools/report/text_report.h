// Reports a run as text in columns, for people.
#pragma once

#include <memory>
#include <ostream>

#include "tools/run/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::replay {

/// Writes to `out`, which must outlive the report as `names` must, a line for each atom, log line,
/// note and suspension, and at the end a summary. It escapes what `Printable` does.
std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out, const SensorNames& names);

}  // namespace sensorvela::replay
