#include "tools/trace/content_readers.h"

#include <algorithm>
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
#include "trace_format/sample_list.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace field = trace_format::field;
namespace item = trace_format::item;
using testkit::SupplierKind;
using trace_format::kMaxTimeNs;
using trace_format::Sample;

namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

constexpr std::int64_t kMaxSamples = 1'000'000'000;
constexpr std::int64_t kHourNs = 3'600'000'000'000;
constexpr std::int64_t kDayNs = 24 * kHourNs;

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

void Read(const JsonValue& value, VendorAtomValue& result);
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

void Read(const JsonValue& value, VendorAtomValue& result) {
  using Kind = trace_format::ValueKind;
  const JsonValue& object = value.AsObject();
  const std::string expected = "one field, named after its kind: " + testkit::KindNames();
  if (object.size != 1) {
    value.Reject("has " + std::to_string(object.size) + " fields", expected);
  }
  const JsonValue& content = *object.begin();
  const std::optional<Kind> kind = testkit::FindKind(content.key);
  if (!kind) value.Reject("has the unknown field " + Quoted(content.key), expected);
  trace_format::WithKind(*kind, [&]<Kind known_kind>() {
    result.set<known_kind>();
    Read(content, result.get<known_kind>());
  });
}

/// Needed because the product of two fields within their bounds can exceed 64 bits.
bool LastsTooLong(const SampleTrain& train) {
  const std::int64_t steps = train.count - 1;
  if (steps == 0) return false;
  if (train.interval_ns > kMaxTimeNs / steps) return true;
  const std::int64_t gaps = train.gap_every == 0 ? 0 : steps / train.gap_every;
  return gaps > 0 && train.gap_ns > (kMaxTimeNs - steps * train.interval_ns) / gaps;
}

/// Appends the samples of one list.
void AppendList(const JsonValue& list, const JsonValue& sensor, std::int64_t at_ns,
                std::vector<Sample>& samples) {
  std::string_view text = list.Text();
  auto half = sensor.AsList(2).begin();
  Sample sample = {};
  sample.sensor.high = half->Integer<std::uint32_t>();
  ++half;
  sample.sensor.low = half->Integer<std::int32_t>();
  trace_format::SampleListCodec codec(at_ns);
  while (!text.empty()) {
    if (!codec.Take(text, sample)) {
      list.Reject("is no list of samples",
                  "base-64 variable-length quantities, two for each sample, of instants that do "
                  "not go back");
    }
    samples.push_back(sample);
  }
}

}  // namespace

VendorAtom ReadOutsideAtom(FieldReader& fields) {
  VendorAtom atom;
  atom.atomId = fields.Integer<std::int32_t>(field::kId);
  const JsonValue* const domain = fields.OptionalValue(field::kDomain, "a string");
  if (domain != nullptr) atom.reverseDomainName = domain->Text();
  Read(fields.List(field::kValues), atom.values);
  return atom;
}

testkit::Diagnostics ReadDiagnostics(FieldReader& fields, SupplierKind supplier) {
  if (supplier == SupplierKind::kNone) {
    throw EventError("diagnostics without a supplier: expected an engine_start with one");
  }
  const auto read = [&](std::string_view name, std::string_view expected, auto& answer,
                        bool first_generation_has_it = false) {
    const JsonValue* const value = fields.OptionalValue(name, expected);
    if (value == nullptr) return;
    if (supplier == SupplierKind::kFirstGeneration && !first_generation_has_it) {
      value->Reject("is no item of a first-generation supplier",
                    "only processor, queue_1, queue_2 and queue_3");
    }
    Read(*value, answer);
  };
  testkit::Diagnostics all;
  read(item::kProcessor, "an array of 4 integers", all.processor, true);
  read(item::kQueue1, "an array of 6 integers", all.queues[0], true);
  read(item::kQueue2, "an array of 6 integers", all.queues[1], true);
  read(item::kQueue3, "an array of 6 integers", all.queues[2], true);
  read(item::kIpcErrorRates, "an array of arrays of 4 integers", all.ipc_error_rates);
  read(item::kMemory, "an array of objects", all.memory);
  read(item::kSensorUsages, "an array of arrays of 7 integers", all.sensor_usages);
  read(item::kGatingContexts, "an array of arrays of 9 integers", all.gating_contexts);
  read(item::kDramException, "an array of 5 integers", all.dram_exception);
  read(item::kProxStats, "an array of 20 numbers", all.prox_stats);
  return all;
}

SampleTrain ReadSampleTrain(FieldReader& fields) {
  constexpr std::int64_t kAbsent = -1;
  SampleTrain train = {};
  train.sensor = fields.Sensor();
  train.count = fields.Integer<std::int64_t>("count", 1, kMaxSamples);
  train.interval_ns = fields.Integer<std::int64_t>("interval_ns", 0, kDayNs);
  train.latency_ns = fields.Integer<std::int64_t>("latency_ns", 0, kHourNs);
  const auto gap_every = fields.OptionalInteger<std::int64_t>("gap_every", kAbsent, 1, kMaxSamples);
  const auto gap_ns = fields.OptionalInteger<std::int64_t>("gap_ns", kAbsent, 0, kDayNs);
  if ((gap_every == kAbsent) != (gap_ns == kAbsent)) {
    throw EventError("one of gap_every and gap_ns without the other: expected both or neither");
  }
  if (gap_every != kAbsent) {
    train.gap_every = gap_every;
    train.gap_ns = gap_ns;
  }
  if (LastsTooLong(train)) {
    throw EventError("a train of samples that lasts too long: expected at most " +
                     std::to_string(kMaxTimeNs) + " ns from its first sample to its last");
  }
  return train;
}

std::vector<Sample> ReadSampleLists(FieldReader& fields, std::int64_t at_ns) {
  const JsonValue& sensors = fields.List(field::kSensors);
  const JsonValue& lists = fields.List(field::kLists);
  if (sensors.size != lists.size) {
    throw EventError(
        "the fields \"sensors\" and \"lists\" have different lengths: expected a list "
        "for each sensor");
  }
  std::vector<Sample> samples;
  auto sensor = sensors.begin();
  for (const JsonValue& list : lists) {
    AppendList(list, *sensor, at_ns, samples);
    ++sensor;
  }
  // By the arrivals, and where those are the same in the order of the lists.
  std::ranges::stable_sort(samples, {}, &Sample::arrival_ns);
  return samples;
}

}  // namespace sensorvela::tools
