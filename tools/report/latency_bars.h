// A sensor's samples by latency, drawn for a terminal.
#pragma once

#include <string>

#include "tools/run/sensor_tally.h"

namespace sensorvela::replay {

/// One line for each latency band: its limit, a bar in proportion to the largest band, the samples
/// in it and their share. No lines for a sensor of which no sample was reported.
std::string LatencyBars(const ReportedSamples& reported);

}  // namespace sensorvela::replay
