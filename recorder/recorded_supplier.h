// Suppliers that stand between the engine and the host's supplier, and record what that one
// answers.
#pragma once

#include <memory>

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/recording.h"

namespace sensorvela::recorder {

/// Passes every question on to the host's supplier, which it owns. The host's must not be null.
std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> MakeRecordedSupplier(
    std::shared_ptr<Recording> recording,
    std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> hosts);

/// The same. For a null supplier it answers with nothing, for which the engine sends no atom: the
/// questions still tell when a cycle ends.
std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> MakeRecordedSupplier(
    std::shared_ptr<Recording> recording,
    std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> hosts);

}  // namespace sensorvela::recorder
