// Histograms for the two lists of the memory serviceability atom, for hosts that count samples into
// them.
#pragma once

#include <memory>

#include "../histogram/stats_histogram.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// A new histogram of 22 bins: one below 0, twenty of width 5 from 0 to 100, and one from 100
/// upward.
[[gnu::visibility("default")]] std::unique_ptr<android::util::statslogapigen::StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_allocation_count_histogram();

/// A new histogram with the same bins.
[[gnu::visibility("default")]] std::unique_ptr<android::util::statslogapigen::StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_duration_ms_histogram();

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
