#include "tools/diagnostics_suppliers.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace sensorvela::replay {
namespace {

class FirstGeneration : public SensorVela::SystemDiagnosticsSupplier {
 public:
  explicit FirstGeneration(OnCycleEnd on_cycle_end) : on_cycle_end_(std::move(on_cycle_end)) {}

  SensorVela::ProcessorDiag GetProcessorDiagnostics() override {
    answers_ = on_cycle_end_();
    return answers_.processor.value_or(SensorVela::ProcessorDiag{});
  }
  SensorVela::QueueStress GetQueueStressType1() override { return Queue(0); }
  SensorVela::QueueStress GetQueueStressType2() override { return Queue(1); }
  SensorVela::QueueStress GetQueueStressType3() override { return Queue(2); }

 private:
  SensorVela::QueueStress Queue(std::size_t index) const {
    return answers_.queues.at(index).value_or(SensorVela::QueueStress{});
  }

  const OnCycleEnd on_cycle_end_;
  Diagnostics answers_;
};

template <typename Record>
std::unique_ptr<Record> Owned(const std::optional<Record>& record) {
  return record ? std::make_unique<Record>(*record) : nullptr;
}

class SecondGeneration : public SensorVela::SystemDiagnosticsSupplierV2 {
 public:
  explicit SecondGeneration(OnCycleEnd on_cycle_end) : on_cycle_end_(std::move(on_cycle_end)) {}

  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override {
    answers_ = on_cycle_end_();
    return Owned(answers_.processor);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType1() override {
    return Owned(answers_.queues[0]);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType2() override {
    return Owned(answers_.queues[1]);
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType3() override {
    return Owned(answers_.queues[2]);
  }
  std::vector<SensorVela::IpcErrorRate> GetIpcErrorRates() override {
    return answers_.ipc_error_rates;
  }
  std::vector<SensorVela::MemoryPressure> GetMemoryPressures() override { return answers_.memory; }
  std::vector<SensorVela::SensorUsage> GetSensorUsages() override { return answers_.sensor_usages; }
  std::vector<SensorVela::GatingContext> GetGatingContexts() override {
    return answers_.gating_contexts;
  }
  std::unique_ptr<SensorVela::DramException> GetDramException() override {
    return Owned(answers_.dram_exception);
  }
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override {
    return Owned(answers_.prox_stats);
  }

 private:
  const OnCycleEnd on_cycle_end_;
  Diagnostics answers_;
};

}  // namespace

std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(
    OnCycleEnd on_cycle_end) {
  return std::make_unique<FirstGeneration>(std::move(on_cycle_end));
}

std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(
    OnCycleEnd on_cycle_end) {
  return std::make_unique<SecondGeneration>(std::move(on_cycle_end));
}

}  // namespace sensorvela::replay
