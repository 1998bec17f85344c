// Findings in the shape of the outputs.
#pragma once

#include <string>

#include "tools/facts/finding.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// "wall_clock  accelerometer (16/1)  12 samples, first at 00:00:01.02, line 12", without the
/// sensor or the line if there is none, with the detail in brackets.
std::string FindingText(const Finding& finding, const SensorNames& names);

/// The keys of docs/output-format.md, from `name` on.
Json ToJson(const Finding& finding, const SensorNames& names);

}  // namespace sensorvela::tools
