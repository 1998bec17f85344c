// A run as JSON Lines, for a program.
#pragma once

#include <memory>
#include <ostream>

#include "tools/run/run_observer.h"

namespace sensorvela::replay {

/// Writes onto `out`, which outlives the report: an object a line, its keys in a fixed order and
/// the first of them `kind`: atom, log, note, sensor or summary. A float reads back as the same
/// float; NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out);

}  // namespace sensorvela::replay
