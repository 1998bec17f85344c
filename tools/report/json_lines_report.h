// Reports a run as JSON Lines, for programs.
#pragma once

#include <memory>
#include <ostream>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// Writes one object per line to `out`, which must outlive the report as `names` must; the
/// first one at once. docs/output-format.md has the kinds of objects and their keys, which are in a
/// fixed order. Texts are escaped as by `Printable`.
/// With `findings_only` there are no other objects than the first one and the findings.
std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out, const SensorNames& names,
                                                 bool findings_only = false);

}  // namespace sensorvela::tools
