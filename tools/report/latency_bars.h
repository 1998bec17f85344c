// Draws a sensor's samples by latency, for a terminal.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tools/facts/sensor_facts.h"

namespace sensorvela::tools {

/// The share of a band in all of them, with one decimal: "12.3 %"; "<0.1 %" where that would be 0,
/// ">99.9 %" where it would be 100 although the band has not all, and empty for an empty band.
std::string Share(const std::array<std::uint64_t, kLatencyBands>& bands, std::size_t band);

/// One line for each latency band: its limit, a bar in proportion to the largest band, the number
/// of samples in it and their share. The lines fit `width` columns, if that is not 0 and leaves the
/// bars ten. Empty for a sensor without a reported sample.
std::string LatencyBars(const SampleCounts& reported, std::size_t width = 0);

}  // namespace sensorvela::tools
