#include "tools/trace/record_readers.h"

#include <array>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/testkit/value_kinds.h>

#include "tools/text/printable_text.h"
#include "trace_format/atom_value.h"
#include "trace_format/record_fields.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace field = trace_format::field;
namespace item = trace_format::item;
using testkit::SupplierKind;

namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

// Each reads what has the type of its second argument.

void Read(const JsonValue& value, bool& content) { content = value.Bool(); }
void Read(const JsonValue& value, float& content) { content = value.Float(); }
void Read(const JsonValue& value, std::string& content) { content = value.Text(); }
template <std::integral Int>
void Read(const JsonValue& value, Int& content) {
  content = value.Integer<Int>();
}

template <typename Record>
void Read(const JsonValue& list, Record& record) {
  auto number = list.AsList(trace_format::FieldCount<Record>()).begin();
  trace_format::ForEachField(record, [&](auto& field) {
    Read(*number, field);
    ++number;
  });
}

void ReadField(FieldReader& fields, std::string_view name, std::uint8_t& kind) {
  kind = fields.Integer<std::uint8_t>(name);
}
void ReadField(FieldReader& fields, std::string_view name, std::array<std::int32_t, 20>& buckets) {
  const JsonValue* const list = fields.OptionalValue(name, "an array of 20 integers");
  if (list == nullptr) return;
  auto number = list->AsList(buckets.size()).begin();
  for (std::int32_t& bucket : buckets) {
    Read(*number, bucket);
    ++number;
  }
}
template <typename Number>
void ReadField(FieldReader& fields, std::string_view name, Number& number) {
  fields.OptionalNumber(name, number);
}

void Read(const JsonValue& object, SensorVela::MemoryPressure& memory) {
  FieldReader fields(object);
  trace_format::ForEachNamedField(
      memory, [&](std::string_view name, auto& field) { ReadField(fields, name, field); });
  fields.RejectOtherFields();
}

template <typename Element>
void Read(const JsonValue& list, std::vector<Element>& content);
template <typename Content>
void Read(const JsonValue& value, std::optional<Content>& content) {
  Read(value, content.emplace());
}
template <typename Element>
void Read(const JsonValue& list, std::vector<Element>& content) {
  for (const JsonValue& value : list.AsList()) {
    Element element{};
    Read(value, element);
    content.push_back(std::move(element));
  }
}

VendorAtomValue ReadValue(const JsonValue& value) {
  using Kind = trace_format::ValueKind;
  const JsonValue& object = value.AsObject();
  const std::string expected = "one field, named after its kind: " + testkit::KindNames();
  if (object.size != 1) {
    value.Reject("has " + std::to_string(object.size) + " fields", expected);
  }
  const JsonValue& content = *object.begin();
  const std::optional<Kind> kind = testkit::FindKind(content.key);
  if (!kind) value.Reject("has the unknown field " + Quoted(content.key), expected);
  VendorAtomValue result;
  trace_format::WithKind(*kind, [&]<Kind known_kind>() {
    result.set<known_kind>();
    Read(content, result.get<known_kind>());
  });
  return result;
}

}  // namespace

VendorAtom ReadOutsideAtom(FieldReader& fields) {
  VendorAtom atom;
  atom.atomId = fields.Integer<std::int32_t>(field::kId);
  const JsonValue* const domain = fields.OptionalValue(field::kDomain, "a string");
  if (domain != nullptr) atom.reverseDomainName = domain->Text();
  for (const JsonValue& value : fields.List(field::kValues)) {
    atom.values.push_back(ReadValue(value));
  }
  return atom;
}

testkit::Diagnostics ReadDiagnostics(FieldReader& fields, SupplierKind supplier) {
  if (supplier == SupplierKind::kNone) {
    throw EventError("diagnostics without a supplier: expected an engine_start with one");
  }
  const auto read = [&](std::string_view name, std::string_view expected, auto& answer) {
    const JsonValue* const value = fields.OptionalValue(name, expected);
    if (value != nullptr) Read(*value, answer);
  };
  const auto read_second = [&](std::string_view name, std::string_view expected, auto& answer) {
    const JsonValue* const value = fields.OptionalValue(name, expected);
    if (value == nullptr) return;
    if (supplier == SupplierKind::kFirstGeneration) {
      value->Reject("is no item of a first-generation supplier",
                    "only processor, queue_1, queue_2 and queue_3");
    }
    Read(*value, answer);
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
