// The histograms of the memory serviceability atom's two lists, for hosts that fill them by
// sampling.
#pragma once

#include <memory>

#include "../histogram/stats_histogram.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

/// A new histogram of 22 bins: below 0, twenty of width 5 from 0 to 100, and from 100 upward.
[[gnu::visibility("default")]] std::unique_ptr<android::util::statslogapigen::StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_allocation_count_histogram();

/// A new histogram with the same bins.
[[gnu::visibility("default")]] std::unique_ptr<android::util::statslogapigen::StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_duration_ms_histogram();

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
