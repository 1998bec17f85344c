#include "tools/trace/diagnostics_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "trace_format/record_fields.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace item = trace_format::item;
using testkit::SupplierKind;

namespace {

void Read(const CheckedValue& value, float& number) { number = value.Float(); }
void Read(const CheckedValue& value, std::int32_t& number) {
  number = value.Integer<std::int32_t>();
}
void Read(const CheckedValue& value, std::int64_t& number) {
  number = value.Integer<std::int64_t>();
}

template <typename Record>
void Read(const CheckedValue& list, Record& record) {
  const auto numbers = list.List(trace_format::FieldCount<Record>());
  auto number = numbers.begin();
  trace_format::ForEachField(record, [&](auto& field) { Read(*number++, field); });
}

// The fields of a record that is an object.

void ReadField(FieldReader& fields, std::string_view name, std::uint8_t& kind) {
  kind = fields.Integer<std::uint8_t>(name);
}
void ReadField(FieldReader& fields, std::string_view name, std::int32_t& number) {
  number = fields.OptionalInteger<std::int32_t>(name, 0);
}
void ReadField(FieldReader& fields, std::string_view name, float& number) {
  number = fields.OptionalFloat(name);
}
void ReadField(FieldReader& fields, std::string_view name, std::array<std::int32_t, 20>& buckets) {
  const auto list = fields.OptionalValue(name, "an array of 20 integers");
  if (!list) return;
  const auto numbers = list->List(buckets.size());
  for (std::size_t i = 0; i < buckets.size(); ++i) Read(numbers[i], buckets[i]);
}

void Read(const CheckedValue& object, SensorVela::MemoryPressure& memory) {
  FieldReader fields(object);
  trace_format::ForEachNamedField(
      memory, [&](std::string_view name, auto& field) { ReadField(fields, name, field); });
  fields.RejectOtherFields();
}

template <typename Record>
void Read(const CheckedValue& item, std::optional<Record>& record) {
  Read(item, record.emplace());
}
template <typename Record>
void Read(const CheckedValue& items, std::vector<Record>& records) {
  for (const CheckedValue& item : items.List()) Read(item, records.emplace_back());
}

}  // namespace

testkit::Diagnostics ReadDiagnostics(FieldReader& fields, SupplierKind supplier) {
  if (supplier == SupplierKind::kNone) {
    throw EventError("diagnostics without a supplier: expected an engine_start with one");
  }
  const auto read = [&](std::string_view name, std::string_view expected, auto& answer) {
    if (const auto value = fields.OptionalValue(name, expected)) Read(*value, answer);
  };
  const auto read_second = [&](std::string_view name, std::string_view expected, auto& answer) {
    const auto value = fields.OptionalValue(name, expected);
    if (value && supplier == SupplierKind::kFirstGeneration) {
      value->Reject("is no item of a first-generation supplier",
                    "only processor, queue_1, queue_2 and queue_3");
    }
    if (value) Read(*value, answer);
  };
  testkit::Diagnostics all;
  read(item::kProcessor, "an array of 4 integers", all.processor);
  read(item::kQueue1, "an array of 6 integers", all.queues[0]);
  read(item::kQueue2, "an array of 6 integers", all.queues[1]);
  read(item::kQueue3, "an array of 6 integers", all.queues[2]);
  read_second(item::kIpcErrorRates, "an array of arrays of 4 integers", all.ipc_error_rates);
  read_second(item::kMemory, "an array of objects", all.memory);
  read_second(item::kSensorUsages, "an array of arrays of 7 integers", all.sensor_usages);
  read_second(item::kGatingContexts, "an array of arrays of 9 integers", all.gating_contexts);
  read_second(item::kDramException, "an array of 5 integers", all.dram_exception);
  read_second(item::kProxStats, "an array of 20 numbers", all.prox_stats);
  return all;
}

}  // namespace sensorvela::tools
