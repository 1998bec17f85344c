// The diagnostics upload at the end of a cycle. Each atom is queued on its own as soon as it is
// built, so that host threads never wait for more than one append.
#include "engine/sensor_vela.h"

void SensorVela::UploadDiagnostics() {
  if (diagnostics_supplier_ != nullptr) {
    UploadFrom(*diagnostics_supplier_);
  } else if (diagnostics_supplier_v2_ != nullptr) {
    UploadFrom(*diagnostics_supplier_v2_);
  }
}

void SensorVela::UploadFrom(SystemDiagnosticsSupplier& supplier) {
  Enqueue(ProcessorDiagnosticsAtom(supplier.GetProcessorDiagnostics()));
  Enqueue(SystemQueueStressAtom(QueueType::kType1, supplier.GetQueueStressType1()));
  Enqueue(SystemQueueStressAtom(QueueType::kType2, supplier.GetQueueStressType2()));
  Enqueue(SystemQueueStressAtom(QueueType::kType3, supplier.GetQueueStressType3()));
}

void SensorVela::UploadFrom(SystemDiagnosticsSupplierV2& supplier) {
  const auto processor = supplier.GetProcessorDiagnostics();
  if (processor != nullptr) Enqueue(ProcessorDiagnosticsAtom(*processor));

  const auto queue_1 = supplier.GetQueueStressType1();
  if (queue_1 != nullptr) Enqueue(SystemQueueStressAtom(QueueType::kType1, *queue_1));
  const auto queue_2 = supplier.GetQueueStressType2();
  if (queue_2 != nullptr) Enqueue(SystemQueueStressAtom(QueueType::kType2, *queue_2));
  const auto queue_3 = supplier.GetQueueStressType3();
  if (queue_3 != nullptr) Enqueue(SystemQueueStressAtom(QueueType::kType3, *queue_3));

  const auto ipc_error_rates = supplier.GetIpcErrorRates();
  for (const IpcErrorRate& rate : ipc_error_rates) Enqueue(IpcErrorRateAtom(rate));

  const auto memory_pressures = supplier.GetMemoryPressures();
  for (const MemoryPressure& memory : memory_pressures) {
    Enqueue(memory.kind == MemoryPressure::kServiceability ? MemServiceabilityAtom(memory)
                                                           : MemoryPressureAtom(memory));
  }

  const auto sensor_usages = supplier.GetSensorUsages();
  for (const SensorUsage& usage : sensor_usages) Enqueue(SensorUsageAtom(usage));

  const auto gating_contexts = supplier.GetGatingContexts();
  for (const GatingContext& context : gating_contexts) Enqueue(GatingContextAtom(context));

  const auto dram_exception = supplier.GetDramException();
  if (dram_exception != nullptr) Enqueue(DramExceptionAtom(*dram_exception));

  const auto prox_stats = supplier.GetAadProxStats();
  if (prox_stats != nullptr) Enqueue(AadProxStatsAtom(*prox_stats));
}
