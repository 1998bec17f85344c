// Shows all sensors' samples by latency in one table.
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
std::vector<std::string> SensorTable(const std::vector<SensorSummary>& sensors,
                                     const SensorNames& names, std::size_t width);

}  // namespace sensorvela::tools
