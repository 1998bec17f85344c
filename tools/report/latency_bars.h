// Draws a sensor's samples by latency, for a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "tools/facts/sensor_facts.h"

namespace sensorvela::tools {

/// One line for each latency band: its limit, a bar in proportion to the largest band, the number
/// of samples in it and their share. The lines fit `width` columns, if that is not 0 and leaves the
/// bars ten. Empty for a sensor without a reported sample.
std::string LatencyBars(const SampleCounts& reported, std::size_t width = 0);

}  // namespace sensorvela::tools
