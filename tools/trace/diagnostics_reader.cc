#include "tools/trace/diagnostics_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace sensorvela::replay {

using testkit::SupplierKind;

namespace {

/// Reads an array of numbers, each once and in order.
class NumberReader {
 public:
  NumberReader(const CheckedValue& list, std::size_t count) : numbers_(list.List(count)) {}

  std::int32_t Int() { return numbers_[next_++].Integer<std::int32_t>(); }
  std::int64_t Long() { return numbers_[next_++].Integer<std::int64_t>(); }
  float Float() { return numbers_[next_++].Float(); }

 private:
  std::vector<CheckedValue> numbers_;
  std::size_t next_ = 0;
};

SensorVela::ProcessorDiag ReadProcessor(const CheckedValue& list) {
  NumberReader in(list, 4);
  return {in.Long(), in.Long(), in.Long(), in.Long()};
}

SensorVela::QueueStress ReadQueue(const CheckedValue& list) {
  NumberReader in(list, 6);
  return {in.Long(), in.Long(), in.Int(), in.Int(), in.Long(), in.Long()};
}

SensorVela::IpcErrorRate ReadIpcErrorRate(const CheckedValue& list) {
  NumberReader in(list, 4);
  return {in.Int(), in.Int(), in.Int(), in.Int()};
}

SensorVela::SensorUsage ReadSensorUsage(const CheckedValue& list) {
  NumberReader in(list, 7);
  return {in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int()};
}

SensorVela::GatingContext ReadGatingContext(const CheckedValue& list) {
  NumberReader in(list, 9);
  return {in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int(), in.Int()};
}

SensorVela::DramException ReadDramException(const CheckedValue& list) {
  NumberReader in(list, 5);
  return {in.Int(), in.Int(), in.Int(), in.Int(), in.Int()};
}

SensorVela::AadProxStats ReadProxStats(const CheckedValue& list) {
  NumberReader in(list, 20);
  return {in.Int(), in.Int(),   in.Int(),   in.Int(),   in.Int(),   in.Int(),   in.Int(),
          in.Int(), in.Float(), in.Float(), in.Float(), in.Float(), in.Float(), in.Float(),
          in.Int(), in.Int(),   in.Int(),   in.Int(),   in.Int(),   in.Int()};
}

std::array<std::int32_t, 20> ReadBuckets(FieldReader& fields, std::string_view name) {
  std::array<std::int32_t, 20> buckets = {};
  if (const auto list = fields.OptionalValue(name, "an array of 20 integers")) {
    NumberReader in(*list, buckets.size());
    for (std::int32_t& bucket : buckets) bucket = in.Int();
  }
  return buckets;
}

SensorVela::MemoryPressure ReadMemory(const CheckedValue& object) {
  FieldReader fields(object);
  const auto optional_int = [&](std::string_view name) {
    return fields.OptionalInteger<std::int32_t>(name, 0);
  };
  SensorVela::MemoryPressure memory = {};
  memory.kind = fields.Integer<std::uint8_t>("kind");
  memory.shared_value = optional_int("shared_value");
  memory.pressure_value_1 = optional_int("pressure_value_1");
  memory.pressure_value_2 = optional_int("pressure_value_2");
  memory.pressure_value_3 = optional_int("pressure_value_3");
  memory.pressure_value_4 = fields.OptionalFloat("pressure_value_4");
  memory.serviceability_value_1 = optional_int("serviceability_value_1");
  memory.serviceability_value_2 = optional_int("serviceability_value_2");
  memory.bucket_allocation_count = ReadBuckets(fields, "bucket_allocation_count");
  memory.bucket_duration_ms = ReadBuckets(fields, "bucket_duration_ms");
  fields.RejectOtherFields();
  return memory;
}

template <typename Record>
std::optional<Record> ReadItem(const std::optional<CheckedValue>& item,
                               Record (*read)(const CheckedValue&)) {
  if (!item) return std::nullopt;
  return read(*item);
}

template <typename Record>
std::vector<Record> ReadItems(const std::optional<CheckedValue>& items,
                              Record (*read)(const CheckedValue&)) {
  std::vector<Record> records;
  if (!items) return records;
  for (const CheckedValue& item : items->List()) records.push_back(read(item));
  return records;
}

}  // namespace

testkit::Diagnostics ReadDiagnostics(FieldReader& fields, SupplierKind supplier) {
  if (supplier == SupplierKind::kNone) {
    throw EventError("diagnostics without a supplier: expected an engine_start with one");
  }
  const auto second_generation = [&](std::string_view name, std::string_view expected) {
    const auto item = fields.OptionalValue(name, expected);
    if (item && supplier == SupplierKind::kFirstGeneration) {
      item->Reject("is no item of a first-generation supplier",
                   "only processor, queue_1, queue_2 and queue_3");
    }
    return item;
  };
  return {
      .processor =
          ReadItem(fields.OptionalValue("processor", "an array of 4 integers"), ReadProcessor),
      .queues = {ReadItem(fields.OptionalValue("queue_1", "an array of 6 integers"), ReadQueue),
                 ReadItem(fields.OptionalValue("queue_2", "an array of 6 integers"), ReadQueue),
                 ReadItem(fields.OptionalValue("queue_3", "an array of 6 integers"), ReadQueue)},
      .ipc_error_rates =
          ReadItems(second_generation("ipc_error_rates", "an array of arrays of 4 integers"),
                    ReadIpcErrorRate),
      .memory = ReadItems(second_generation("memory", "an array of objects"), ReadMemory),
      .sensor_usages = ReadItems(
          second_generation("sensor_usages", "an array of arrays of 7 integers"), ReadSensorUsage),
      .gating_contexts =
          ReadItems(second_generation("gating_contexts", "an array of arrays of 9 integers"),
                    ReadGatingContext),
      .dram_exception = ReadItem(second_generation("dram_exception", "an array of 5 integers"),
                                 ReadDramException),
      .prox_stats =
          ReadItem(second_generation("prox_stats", "an array of 20 numbers"), ReadProxStats),
  };
}

}  // namespace sensorvela::replay
