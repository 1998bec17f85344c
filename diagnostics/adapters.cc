// Converts diagnostics records to atoms.
#include <cstdint>
#include <numeric>

#include "atoms/diagnostics_atoms.h"
#include "atoms/moved_records.h"
#include "engine/sensor_vela.h"
#include "engine/wrapping_arithmetic.h"

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

namespace {

/// The atoms carry 32 bits of each value. Suppliers are promised the low 32 of a 64-bit one.
constexpr std::int32_t Low32Bits(std::int64_t value) { return static_cast<std::int32_t>(value); }

}  // namespace

// Where a diagnostics record's fields are numbered, they are the atom's values in the same order.
// The first member of an atom's record, its domain name, is left empty.

SensorVela::VendorAtom SensorVela::ProcessorDiagnosticsAtom(const ProcessorDiag& diag) {
  const auto& [v1, v2, v3, v4] = diag;
  return createVendorAtom(atoms::SensorProcessorDiagnosticsReported{
      {}, Low32Bits(v1), Low32Bits(v2), Low32Bits(v3), Low32Bits(v4)});
}

SensorVela::VendorAtom SensorVela::SystemQueueStressAtom(QueueType queue_type,
                                                         const QueueStress& stress) {
  return createVendorAtom(atoms::SensorSystemQueueStressReported{
      .queue_type = queue_type,
      .value_1 = Low32Bits(stress.value_1),
      .value_2 = Low32Bits(stress.value_2),
      .value_3 = stress.value_3,
      .value_4 = stress.value_4,
      .value_5 = Low32Bits(stress.value_5),
      .value_6 = Low32Bits(stress.value_6),
  });
}

SensorVela::VendorAtom SensorVela::IpcErrorRateAtom(const IpcErrorRate& rate) {
  const auto& [v1, v2, v3, v4] = rate;
  return createVendorAtom(atoms::SensorIpcErrorRateReported{{}, v1, v2, v3, v4});
}

SensorVela::VendorAtom SensorVela::MemoryPressureAtom(const MemoryPressure& memory) {
  return createVendorAtom(atoms::SensorMemoryPressureReported{
      .shared_value = memory.shared_value,
      .pressure_value_1 = memory.pressure_value_1,
      .pressure_value_2 = memory.pressure_value_2,
      .pressure_value_3 = memory.pressure_value_3,
      .pressure_value_4 = memory.pressure_value_4,
  });
}

SensorVela::VendorAtom SensorVela::SensorUsageAtom(const SensorUsage& usage) {
  const auto& [v1, v2, v3, v4, v5, v6, v7] = usage;
  return createVendorAtom(atoms::TarnSensorUsageReported{{}, v1, v2, v3, v4, v5, v6, v7});
}

SensorVela::VendorAtom SensorVela::GatingContextAtom(const GatingContext& context) {
  const auto& [v1, v2, v3, v4, v5, v6, v7, v8, v9] = context;
  return createVendorAtom(
      atoms::SensorGatingContextReported{{}, v1, v2, v3, v4, v5, v6, v7, v8, v9});
}

SensorVela::VendorAtom SensorVela::DramExceptionAtom(const DramException& exception) {
  const auto& [v1, v2, v3, v4, v5] = exception;
  return createVendorAtom(atoms::SensorCoreDramExceptionsReported{{}, v1, v2, v3, v4, v5});
}

SensorVela::VendorAtom SensorVela::AadProxStatsAtom(const AadProxStats& stats) {
  const auto& [v1, v2, v3, v4, v5, v6, v7, v8, v9, v10, v11, v12, v13, v14, v15, v16, v17, v18, v19,
               v20] = stats;
  return createVendorAtom(atoms::AADProxStatsReported{{},  v1,  v2,  v3,  v4,  v5,  v6,
                                                      v7,  v8,  v9,  v10, v11, v12, v13,
                                                      v14, v15, v16, v17, v18, v19, v20});
}

SensorVela::VendorAtom SensorVela::MemServiceabilityAtom(const MemoryPressure& memory) {
  const auto& counts = memory.bucket_allocation_count;
  const auto& durations = memory.bucket_duration_ms;
  return MoveIntoVendorAtom(atoms::SensorMemoryServiceabilityStatsReported{
      .bucket_allocation_total = std::accumulate(counts.begin(), counts.end(), std::int32_t{0},
                                                 sensorvela::WrappingAdd<std::int32_t>),
      .shared_value = memory.shared_value,
      .serviceability_value_1 = memory.serviceability_value_1,
      .serviceability_value_2 = memory.serviceability_value_2,
      .bucket_allocation_count = {counts.begin(), counts.end()},
      .bucket_duration_ms = {durations.begin(), durations.end()},
  });
}
