// Refers to every record that a host fills and every interface that it implements, so that
// libabigail finds all their layouts in one file. Built only for the check `abi`.
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/histogram/stats_histogram.h>
#include "atoms/all_records.h"

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

template <typename... Records>
struct Pointers;
template <typename Record, typename... Records>
struct Pointers<Record, Records...> : Pointers<Records...> {
  Record* record = nullptr;
};
template <>
struct Pointers<> {};

template <typename... AtomRecords>
Pointers<SensorVela, SensorVela::SensorId, SensorVela::TarnVelaProxEvent, SensorVela::ProcessorDiag,
         SensorVela::QueueStress, SensorVela::IpcErrorRate, SensorVela::MemoryPressure,
         SensorVela::SensorUsage, SensorVela::GatingContext, SensorVela::DramException,
         SensorVela::AadProxStats, SensorVela::SystemDiagnosticsSupplier,
         SensorVela::SystemDiagnosticsSupplierV2, android::util::statslogapigen::StatsHistogram,
         AtomRecords...>
    PointersTo(atoms::RecordList<AtomRecords...>);

using PublicRecords = decltype(PointersTo(atoms::AllRecords()));
extern const PublicRecords kPublicRecords;
const PublicRecords kPublicRecords = {};
