// Diagnostics suppliers of both generations that return items of a plain struct.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "../engine/sensor_vela.h"

namespace sensorvela::testkit {

/// What a supplier's operations return. At first everything is absent. A first-generation supplier
/// uses only the processor and the queues, and returns zeros for those that are absent.
struct Diagnostics {
  std::optional<SensorVela::ProcessorDiag> processor;
  /// The stress of the queues of type 1, 2 and 3.
  std::array<std::optional<SensorVela::QueueStress>, 3> queues;
  std::vector<SensorVela::IpcErrorRate> ipc_error_rates;
  std::vector<SensorVela::MemoryPressure> memory;
  std::vector<SensorVela::SensorUsage> sensor_usages;
  std::vector<SensorVela::GatingContext> gating_contexts;
  std::optional<SensorVela::DramException> dram_exception;
  std::optional<SensorVela::AadProxStats> prox_stats;
};

/// The operations of a supplier, in the order in which the engine calls them at a cycle's end. The
/// first generation ends with `kQueue3`.
enum class DiagnosticsItem {
  kProcessor,
  kQueue1,
  kQueue2,
  kQueue3,
  kIpcErrorRates,
  kMemory,
  kSensorUsages,
  kGatingContexts,
  kDramException,
  kProxStats,
};

/// Called on the engine's reporter thread when the engine calls the supplier's operation `asked`,
/// which returns that item of the result. May call the engine.
using AskDiagnostics = std::function<Diagnostics(DiagnosticsItem asked)>;

std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(
    AskDiagnostics ask);
std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(
    AskDiagnostics ask);

/// Suppliers that always return the items of `diagnostics`.
std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(
    const Diagnostics& diagnostics);
std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(
    const Diagnostics& diagnostics);

/// Which supplier an engine is constructed with.
enum class SupplierKind { kNone, kFirstGeneration, kSecondGeneration };

/// A new engine with a supplier of this kind, which calls `ask`.
std::unique_ptr<SensorVela> MakeEngine(SupplierKind kind, AskDiagnostics ask);

}  // namespace sensorvela::testkit
