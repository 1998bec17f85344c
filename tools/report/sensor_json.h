// A sensor's samples in the shape of the outputs for programs.
#pragma once

#include "tools/facts/run_observer.h"
#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// The samples as they arrived. What there is none of is null.
Json ToJson(const Arrivals& arrivals);

/// How many samples are in no report, by the reason.
Json ToJson(const NotReported& not_reported);

}  // namespace sensorvela::tools
