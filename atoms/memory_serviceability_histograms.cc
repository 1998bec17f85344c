#include "atoms/memory_serviceability_histograms.h"

#include <memory>

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

using android::util::statslogapigen::StatsHistogram;

std::unique_ptr<StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_allocation_count_histogram() {
  return StatsHistogram::createLinearBins(0, 100, 20);
}

std::unique_ptr<StatsHistogram>
create_sensor_memory_serviceability_stats_reported__bucket_duration_ms_histogram() {
  return StatsHistogram::createLinearBins(0, 100, 20);
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
