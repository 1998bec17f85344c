// The list of the library's atom records, for code that does the same with each of them. Internal
// to the project.
#pragma once

#include <algorithm>
#include <array>
#include <functional>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "atoms/standalone_atoms.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

template <typename... Records>
struct RecordList {
  static constexpr std::array kAtomIds = {Records::kAtomId...};

  /// Calls `body.template operator()<Record>()` for each record, in the list's order.
  template <typename Body>
  static void ForEach(const Body& body) {
    (body.template operator()<Records>(), ...);
  }
};

/// By ascending identifier.
using AllRecords =
    RecordList<SensorHalErrorDetected, SensorRuntimeErrorDetected,
               SensorProcessorDiagnosticsReported, SensorSystemQueueStressReported,
               SensorIpcErrorRateReported, SensorMemoryPressureReported, HingeAngleStateChanged,
               TarnSensorUsageReported, TarnServerWorkerUsageReported, SensorGatingContextReported,
               SensorCoreDramExceptionsReported, ProxStatusReported, HingeHallSensorTriggered,
               HalSensorStateChanged, SensorHalLatencyRecorded, SensorFirmwareStateChanged,
               SensorFirstSampleReported, AlsLuxLevelDistributionReported,
               SensorMemoryServiceabilityStatsReported, AADProxStatsReported>;
static_assert(AllRecords::kAtomIds.size() == 20);
static_assert(std::ranges::adjacent_find(AllRecords::kAtomIds, std::ranges::greater_equal()) ==
              AllRecords::kAtomIds.end());

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
