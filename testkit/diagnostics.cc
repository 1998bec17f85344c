#include "testkit/diagnostics.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace sensorvela::testkit {
namespace {

using Item = DiagnosticsItem;
using V = SensorVela;

class FirstGeneration : public V::SystemDiagnosticsSupplier {
 public:
  explicit FirstGeneration(AskDiagnostics ask) : ask_(std::move(ask)) {}

  V::ProcessorDiag GetProcessorDiagnostics() override {
    return ask_(Item::kProcessor).processor.value_or(V::ProcessorDiag{});
  }
  V::QueueStress GetQueueStressType1() override { return Queue(Item::kQueue1, 0); }
  V::QueueStress GetQueueStressType2() override { return Queue(Item::kQueue2, 1); }
  V::QueueStress GetQueueStressType3() override { return Queue(Item::kQueue3, 2); }

 private:
  V::QueueStress Queue(Item item, std::size_t index) const {
    return ask_(item).queues.at(index).value_or(V::QueueStress{});
  }

  const AskDiagnostics ask_;
};

template <typename Record>
std::unique_ptr<Record> Owned(const std::optional<Record>& record) {
  return record ? std::make_unique<Record>(*record) : nullptr;
}

class SecondGeneration : public V::SystemDiagnosticsSupplierV2 {
 public:
  explicit SecondGeneration(AskDiagnostics ask) : ask_(std::move(ask)) {}

  std::unique_ptr<V::ProcessorDiag> GetProcessorDiagnostics() override {
    return Owned(ask_(Item::kProcessor).processor);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType1() override {
    return Owned(ask_(Item::kQueue1).queues[0]);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType2() override {
    return Owned(ask_(Item::kQueue2).queues[1]);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType3() override {
    return Owned(ask_(Item::kQueue3).queues[2]);
  }
  std::vector<V::IpcErrorRate> GetIpcErrorRates() override {
    return ask_(Item::kIpcErrorRates).ipc_error_rates;
  }
  std::vector<V::MemoryPressure> GetMemoryPressures() override {
    return ask_(Item::kMemory).memory;
  }
  std::vector<V::SensorUsage> GetSensorUsages() override {
    return ask_(Item::kSensorUsages).sensor_usages;
  }
  std::vector<V::GatingContext> GetGatingContexts() override {
    return ask_(Item::kGatingContexts).gating_contexts;
  }
  std::unique_ptr<V::DramException> GetDramException() override {
    return Owned(ask_(Item::kDramException).dram_exception);
  }
  std::unique_ptr<V::AadProxStats> GetAadProxStats() override {
    return Owned(ask_(Item::kProxStats).prox_stats);
  }

 private:
  const AskDiagnostics ask_;
};

AskDiagnostics Always(const Diagnostics& diagnostics) {
  return [diagnostics](Item) { return diagnostics; };
}

}  // namespace

std::unique_ptr<V::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(AskDiagnostics ask) {
  return std::make_unique<FirstGeneration>(std::move(ask));
}

std::unique_ptr<V::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(AskDiagnostics ask) {
  return std::make_unique<SecondGeneration>(std::move(ask));
}

std::unique_ptr<V::SystemDiagnosticsSupplier> MakeFirstGenerationSupplier(
    const Diagnostics& diagnostics) {
  return MakeFirstGenerationSupplier(Always(diagnostics));
}

std::unique_ptr<V::SystemDiagnosticsSupplierV2> MakeSecondGenerationSupplier(
    const Diagnostics& diagnostics) {
  return MakeSecondGenerationSupplier(Always(diagnostics));
}

std::unique_ptr<SensorVela> MakeEngine(SupplierKind kind, AskDiagnostics ask) {
  switch (kind) {
    case SupplierKind::kFirstGeneration:
      return std::make_unique<SensorVela>(MakeFirstGenerationSupplier(std::move(ask)));
    case SupplierKind::kSecondGeneration:
      return std::make_unique<SensorVela>(MakeSecondGenerationSupplier(std::move(ask)));
    case SupplierKind::kNone:
      break;
  }
  return std::make_unique<SensorVela>(std::unique_ptr<V::SystemDiagnosticsSupplier>());
}

}  // namespace sensorvela::testkit
