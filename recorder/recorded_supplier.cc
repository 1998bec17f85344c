#include "recorder/recorded_supplier.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "recorder/event_line.h"

namespace sensorvela::recorder {
namespace {

using V = SensorVela;

// The elements of each record, in the order in which a trace has them.

template <typename... Values>
void WriteValues(EventLine& line, const Values&... values) {
  line.Open('[');
  (line.Value(values), ...);
  line.Close(']');
}

void WriteArray(EventLine& line, std::span<const std::int32_t> values) {
  line.Open('[');
  for (const std::int32_t value : values) line.Value(value);
  line.Close(']');
}

void Write(EventLine& line, const V::ProcessorDiag& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4);
}
void Write(EventLine& line, const V::QueueStress& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6);
}
void Write(EventLine& line, const V::IpcErrorRate& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4);
}
void Write(EventLine& line, const V::SensorUsage& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6, r.value_7);
}
void Write(EventLine& line, const V::GatingContext& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6, r.value_7,
              r.value_8, r.value_9);
}
void Write(EventLine& line, const V::DramException& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5);
}
void Write(EventLine& line, const V::AadProxStats& r) {
  WriteValues(line, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6, r.value_7,
              r.value_8, r.value_9, r.value_10, r.value_11, r.value_12, r.value_13, r.value_14,
              r.value_15, r.value_16, r.value_17, r.value_18, r.value_19, r.value_20);
}
void Write(EventLine& line, const V::MemoryPressure& r) {
  line.Open('{')
      .Integer("kind", r.kind)
      .Integer("shared_value", r.shared_value)
      .Integer("pressure_value_1", r.pressure_value_1)
      .Integer("pressure_value_2", r.pressure_value_2)
      .Integer("pressure_value_3", r.pressure_value_3)
      .Float("pressure_value_4", r.pressure_value_4)
      .Integer("serviceability_value_1", r.serviceability_value_1)
      .Integer("serviceability_value_2", r.serviceability_value_2)
      .Name("bucket_allocation_count");
  WriteArray(line, r.bucket_allocation_count);
  line.Name("bucket_duration_ms");
  WriteArray(line, r.bucket_duration_ms);
  line.Close('}');
}
template <typename Record>
void Write(EventLine& line, const std::unique_ptr<Record>& record) {
  Write(line, *record);
}
template <typename Record>
void Write(EventLine& line, const std::vector<Record>& records) {
  line.Open('[');
  for (const Record& record : records) Write(line, record);
  line.Close(']');
}

// Whether the engine queues atoms for an answer.

template <typename Record>
bool HasAtoms(const Record& /*record*/) {
  return true;
}
template <typename Record>
bool HasAtoms(const std::unique_ptr<Record>& record) {
  return record != nullptr;
}
template <typename Record>
bool HasAtoms(const std::vector<Record>& records) {
  return !records.empty();
}

/// The recording of one supplier's answers, for both generations.
template <typename Supplier>
class Answers {
 public:
  Answers(std::shared_ptr<Recording> recording, std::unique_ptr<Supplier> hosts)
      : recording_(std::move(recording)), hosts_(std::move(hosts)) {}

  /// Asks the host's supplier and records the answer, which a trace calls `item`.
  template <typename Answer>
  Answer Ask(std::string_view item, Answer (Supplier::*operation)()) {
    recording_->SupplierIsAsked(item == "processor");
    if (hosts_ == nullptr) return {};
    ThisThread().is_in_supplier = true;
    Answer answer = ((*hosts_).*operation)();
    ThisThread().is_in_supplier = false;
    const bool has_atoms = HasAtoms(answer);
    recording_->SupplierAnswers(has_atoms, [&](EventLine& line) {
      if (!has_atoms) return;
      line.Name(item);
      Write(line, answer);
    });
    return answer;
  }

 private:
  const std::shared_ptr<Recording> recording_;
  const std::unique_ptr<Supplier> hosts_;
};

class FirstGeneration : public V::SystemDiagnosticsSupplier {
  using Supplier = V::SystemDiagnosticsSupplier;

 public:
  FirstGeneration(std::shared_ptr<Recording> recording, std::unique_ptr<Supplier> hosts)
      : answers_(std::move(recording), std::move(hosts)) {}

  V::ProcessorDiag GetProcessorDiagnostics() override {
    return answers_.Ask("processor", &Supplier::GetProcessorDiagnostics);
  }
  V::QueueStress GetQueueStressType1() override {
    return answers_.Ask("queue_1", &Supplier::GetQueueStressType1);
  }
  V::QueueStress GetQueueStressType2() override {
    return answers_.Ask("queue_2", &Supplier::GetQueueStressType2);
  }
  V::QueueStress GetQueueStressType3() override {
    return answers_.Ask("queue_3", &Supplier::GetQueueStressType3);
  }

 private:
  Answers<Supplier> answers_;
};

class SecondGeneration : public V::SystemDiagnosticsSupplierV2 {
  using Supplier = V::SystemDiagnosticsSupplierV2;

 public:
  SecondGeneration(std::shared_ptr<Recording> recording, std::unique_ptr<Supplier> hosts)
      : answers_(std::move(recording), std::move(hosts)) {}

  std::unique_ptr<V::ProcessorDiag> GetProcessorDiagnostics() override {
    return answers_.Ask("processor", &Supplier::GetProcessorDiagnostics);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType1() override {
    return answers_.Ask("queue_1", &Supplier::GetQueueStressType1);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType2() override {
    return answers_.Ask("queue_2", &Supplier::GetQueueStressType2);
  }
  std::unique_ptr<V::QueueStress> GetQueueStressType3() override {
    return answers_.Ask("queue_3", &Supplier::GetQueueStressType3);
  }
  std::vector<V::IpcErrorRate> GetIpcErrorRates() override {
    return answers_.Ask("ipc_error_rates", &Supplier::GetIpcErrorRates);
  }
  std::vector<V::MemoryPressure> GetMemoryPressures() override {
    return answers_.Ask("memory", &Supplier::GetMemoryPressures);
  }
  std::vector<V::SensorUsage> GetSensorUsages() override {
    return answers_.Ask("sensor_usages", &Supplier::GetSensorUsages);
  }
  std::vector<V::GatingContext> GetGatingContexts() override {
    return answers_.Ask("gating_contexts", &Supplier::GetGatingContexts);
  }
  std::unique_ptr<V::DramException> GetDramException() override {
    return answers_.Ask("dram_exception", &Supplier::GetDramException);
  }
  std::unique_ptr<V::AadProxStats> GetAadProxStats() override {
    return answers_.Ask("prox_stats", &Supplier::GetAadProxStats);
  }

 private:
  Answers<Supplier> answers_;
};

}  // namespace

std::unique_ptr<V::SystemDiagnosticsSupplier> MakeRecordedSupplier(
    std::shared_ptr<Recording> recording, std::unique_ptr<V::SystemDiagnosticsSupplier> hosts) {
  return std::make_unique<FirstGeneration>(std::move(recording), std::move(hosts));
}

std::unique_ptr<V::SystemDiagnosticsSupplierV2> MakeRecordedSupplier(
    std::shared_ptr<Recording> recording, std::unique_ptr<V::SystemDiagnosticsSupplierV2> hosts) {
  return std::make_unique<SecondGeneration>(std::move(recording), std::move(hosts));
}

}  // namespace sensorvela::recorder
