// What a diagnostics supplier answers in a trace.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include "tools/field_reader.h"

namespace sensorvela::replay {

enum class SupplierKind { kNone, kFirstGeneration, kSecondGeneration };

/// Every item that a supplier can be asked for. None has a value at first.
struct Diagnostics {
  std::optional<SensorVela::ProcessorDiag> processor;
  /// Of the queues of type 1, 2 and 3.
  std::array<std::optional<SensorVela::QueueStress>, 3> queues;
  std::vector<SensorVela::IpcErrorRate> ipc_error_rates;
  std::vector<SensorVela::MemoryPressure> memory;
  std::vector<SensorVela::SensorUsage> sensor_usages;
  std::vector<SensorVela::GatingContext> gating_contexts;
  std::optional<SensorVela::DramException> dram_exception;
  std::optional<SensorVela::AadProxStats> prox_stats;
};

/// Throws `EventError` for an item that such a supplier is never asked for.
Diagnostics ReadDiagnostics(FieldReader& fields, SupplierKind supplier);

}  // namespace sensorvela::replay
