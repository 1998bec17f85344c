#include "recorder/recorded_supplier.h"

#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "recorder/event_line.h"
#include "trace_format/record_fields.h"
#include "trace_format/words.h"

namespace sensorvela::recorder {

namespace item = trace_format::item;

namespace {

using V = SensorVela;

template <typename Record>
void Write(EventLine& line, const Record& record) {
  line.Open('[');
  trace_format::ForEachField(record, [&](auto number) { line.Value(number); });
  line.Close(']');
}
void Write(EventLine& line, const V::MemoryPressure& memory) {
  line.Open('{');
  trace_format::ForEachNamedField(
      memory, [&](std::string_view name, const auto& field) { line.Name(name).Value(field); });
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

// Whether the supplier has the item.

template <typename Record>
bool IsPresent(const Record& /*record*/) {
  return true;
}
template <typename Record>
bool IsPresent(const std::unique_ptr<Record>& record) {
  return record != nullptr;
}
template <typename Record>
bool IsPresent(const std::vector<Record>& records) {
  return !records.empty();
}

/// The operations of both generations. An `Answer` of a record is how the generation returns it.
template <typename Supplier, template <typename> typename Answer>
class RecordedSupplier : public Supplier {
 public:
  RecordedSupplier(std::shared_ptr<Recording> recording, std::unique_ptr<Supplier> hosts)
      : recording_(std::move(recording)), hosts_(std::move(hosts)) {}

  Answer<V::ProcessorDiag> GetProcessorDiagnostics() override {
    return Ask(item::kProcessor, &Supplier::GetProcessorDiagnostics);
  }
  Answer<V::QueueStress> GetQueueStressType1() override {
    return Ask(item::kQueue1, &Supplier::GetQueueStressType1);
  }
  Answer<V::QueueStress> GetQueueStressType2() override {
    return Ask(item::kQueue2, &Supplier::GetQueueStressType2);
  }
  Answer<V::QueueStress> GetQueueStressType3() override {
    return Ask(item::kQueue3, &Supplier::GetQueueStressType3);
  }

 protected:
  /// Asks the host's supplier and records the answer, which a trace calls `name`.
  template <typename Result>
  Result Ask(std::string_view name, Result (Supplier::*operation)()) {
    recording_->SupplierIsAsked(name == item::kProcessor, hosts_ != nullptr);
    if (hosts_ == nullptr) return {};
    ThisThread().is_in_supplier = true;
    Result answer = ((*hosts_).*operation)();
    ThisThread().is_in_supplier = false;
    recording_->SupplierAnswers([&](EventLine& line) {
      if (IsPresent(answer)) Write(line.Name(name), answer);
    });
    return answer;
  }

 private:
  const std::shared_ptr<Recording> recording_;
  const std::unique_ptr<Supplier> hosts_;
};

using FirstGeneration = RecordedSupplier<V::SystemDiagnosticsSupplier, std::type_identity_t>;

template <typename Record>
using Owned = std::unique_ptr<Record>;

class SecondGeneration : public RecordedSupplier<V::SystemDiagnosticsSupplierV2, Owned> {
  using Supplier = V::SystemDiagnosticsSupplierV2;

 public:
  using RecordedSupplier::RecordedSupplier;

  std::vector<V::IpcErrorRate> GetIpcErrorRates() override {
    return Ask(item::kIpcErrorRates, &Supplier::GetIpcErrorRates);
  }
  std::vector<V::MemoryPressure> GetMemoryPressures() override {
    return Ask(item::kMemory, &Supplier::GetMemoryPressures);
  }
  std::vector<V::SensorUsage> GetSensorUsages() override {
    return Ask(item::kSensorUsages, &Supplier::GetSensorUsages);
  }
  std::vector<V::GatingContext> GetGatingContexts() override {
    return Ask(item::kGatingContexts, &Supplier::GetGatingContexts);
  }
  Owned<V::DramException> GetDramException() override {
    return Ask(item::kDramException, &Supplier::GetDramException);
  }
  Owned<V::AadProxStats> GetAadProxStats() override {
    return Ask(item::kProxStats, &Supplier::GetAadProxStats);
  }
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
