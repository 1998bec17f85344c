// Reports a run as JSON Lines, for programs.
#pragma once

#include <memory>
#include <ostream>

#include "tools/run/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::replay {

/// Writes one object per line to `out`, which must outlive the report as `names` must. The keys of
/// an object are in a fixed order; the first is `kind`: atom, dropped, blocked, log, note,
/// suspended, sensor or summary. Texts are escaped as by `Printable`. A float reads back as the
/// same float; NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out, const SensorNames& names);

}  // namespace sensorvela::replay
