// Shows sensors' samples by latency on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// A line of headings and one for each sensor: its samples, those that no report has, those that
/// were late, and the shares of the reported ones by latency. A share of 0 is empty.
/// A table that is wider than `width` has the labels on lines of their own; if even that is too
/// wide, there is none.
std::string LatencyTable(const std::vector<SensorSummary>& sensors, const SensorNames& names,
                         std::size_t width);

/// One line for each latency band of a sensor: its limit, a bar in proportion to the largest band,
/// the number of samples in it and their share. The lines fit `width` columns, if that is not 0 and
/// leaves the bars ten. Empty for a sensor without a reported sample.
std::string LatencyBars(const SampleCounts& reported, std::size_t width = 0);

}  // namespace sensorvela::tools
