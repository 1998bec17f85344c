// Draws a sensor's samples by latency, for a terminal.
#pragma once

#include <string>

#include "tools/run/sensor_tally.h"

namespace sensorvela::replay {

/// One line for each latency band: its limit, a bar in proportion to the largest band, the number
/// of samples in it and their share. Empty for a sensor without a reported sample.
std::string LatencyBars(const ReportedSamples& reported);

}  // namespace sensorvela::replay
