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

SensorVela::VendorAtom SensorVela::ProcessorDiagnosticsAtom(const ProcessorDiag& diag) {
  return createVendorAtom(atoms::SensorProcessorDiagnosticsReported{
      .value_1 = Low32Bits(diag.value_1),
      .value_2 = Low32Bits(diag.value_2),
      .value_3 = Low32Bits(diag.value_3),
      .value_4 = Low32Bits(diag.value_4),
  });
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
  return createVendorAtom(atoms::SensorIpcErrorRateReported{
      .value_1 = rate.value_1,
      .value_2 = rate.value_2,
      .value_3 = rate.value_3,
      .value_4 = rate.value_4,
  });
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
  return createVendorAtom(atoms::TarnSensorUsageReported{
      .value_1 = usage.value_1,
      .value_2 = usage.value_2,
      .value_3 = usage.value_3,
      .value_4 = usage.value_4,
      .value_5 = usage.value_5,
      .value_6 = usage.value_6,
      .value_7 = usage.value_7,
  });
}

SensorVela::VendorAtom SensorVela::GatingContextAtom(const GatingContext& context) {
  return createVendorAtom(atoms::SensorGatingContextReported{
      .value_1 = context.value_1,
      .value_2 = context.value_2,
      .value_3 = context.value_3,
      .value_4 = context.value_4,
      .value_5 = context.value_5,
      .value_6 = context.value_6,
      .value_7 = context.value_7,
      .value_8 = context.value_8,
      .value_9 = context.value_9,
  });
}

SensorVela::VendorAtom SensorVela::DramExceptionAtom(const DramException& exception) {
  return createVendorAtom(atoms::SensorCoreDramExceptionsReported{
      .value_1 = exception.value_1,
      .value_2 = exception.value_2,
      .value_3 = exception.value_3,
      .value_4 = exception.value_4,
      .value_5 = exception.value_5,
  });
}

SensorVela::VendorAtom SensorVela::AadProxStatsAtom(const AadProxStats& stats) {
  return createVendorAtom(atoms::AADProxStatsReported{
      .value_1 = stats.value_1,
      .value_2 = stats.value_2,
      .value_3 = stats.value_3,
      .value_4 = stats.value_4,
      .value_5 = stats.value_5,
      .value_6 = stats.value_6,
      .value_7 = stats.value_7,
      .value_8 = stats.value_8,
      .value_9 = stats.value_9,
      .value_10 = stats.value_10,
      .value_11 = stats.value_11,
      .value_12 = stats.value_12,
      .value_13 = stats.value_13,
      .value_14 = stats.value_14,
      .value_15 = stats.value_15,
      .value_16 = stats.value_16,
      .value_17 = stats.value_17,
      .value_18 = stats.value_18,
      .value_19 = stats.value_19,
      .value_20 = stats.value_20,
  });
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
