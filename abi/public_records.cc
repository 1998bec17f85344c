// One of each record that a host fills and of each interface that it implements, so that libabigail
// finds all of their layouts in one place. Built for the check `abi` alone.
#include <sensorvela/atoms/diagnostics_atoms.h>
#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/atoms/standalone_atoms.h>
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/histogram/stats_histogram.h>

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

template <typename... Records>
struct Pointers;
template <typename Record, typename... Records>
struct Pointers<Record, Records...> : Pointers<Records...> {
  Record* record = nullptr;
};
template <>
struct Pointers<> {};

using PublicRecords =
    Pointers<SensorVela, SensorVela::SensorId, SensorVela::TarnVelaProxEvent,
             SensorVela::ProcessorDiag, SensorVela::QueueStress, SensorVela::IpcErrorRate,
             SensorVela::MemoryPressure, SensorVela::SensorUsage, SensorVela::GatingContext,
             SensorVela::DramException, SensorVela::AadProxStats,
             SensorVela::SystemDiagnosticsSupplier, SensorVela::SystemDiagnosticsSupplierV2,
             android::util::statslogapigen::StatsHistogram, atoms::SensorHalErrorDetected,
             atoms::SensorRuntimeErrorDetected, atoms::ProxStatusReported,
             atoms::HalSensorStateChanged, atoms::SensorHalLatencyRecorded,
             atoms::SensorFirmwareStateChanged, atoms::SensorFirstSampleReported,
             atoms::SensorProcessorDiagnosticsReported, atoms::SensorSystemQueueStressReported,
             atoms::SensorIpcErrorRateReported, atoms::SensorMemoryPressureReported,
             atoms::TarnSensorUsageReported, atoms::SensorGatingContextReported,
             atoms::SensorCoreDramExceptionsReported,
             atoms::SensorMemoryServiceabilityStatsReported, atoms::AADProxStatsReported,
             atoms::HingeAngleStateChanged, atoms::TarnServerWorkerUsageReported,
             atoms::HingeHallSensorTriggered, atoms::AlsLuxLevelDistributionReported>;
extern const PublicRecords kPublicRecords;
const PublicRecords kPublicRecords = {};
