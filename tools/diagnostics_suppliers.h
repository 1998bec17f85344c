// The host's diagnostics suppliers, of both generations, with answers from a trace.
#pragma once

#include <functional>
#include <memory>

#include <sensorvela/engine/sensor_vela.h>
#include "tools/diagnostics.h"

namespace sensorvela::replay {

/// Says what to answer at the end of a cycle. Called once at each, on the reporter thread: by a
/// supplier's first operation, which the engine calls once in every upload.
using OnCycleEnd = std::function<Diagnostics()>;

/// Answers an absent item with zeros.
std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(
    OnCycleEnd on_cycle_end);

std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(
    OnCycleEnd on_cycle_end);

}  // namespace sensorvela::replay
