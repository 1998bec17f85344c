// The fields of the records that a trace has, in the order in which it has them. Most records are
// arrays of numbers there; two are objects, whose fields have names.
#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::trace_format {

template <typename Type, typename... Types>
concept OneOf = (std::is_same_v<std::remove_const_t<Type>, Types> || ...);

/// Calls `visit` with each field of a diagnostics record, in a trace an array of numbers.
template <typename Record, typename Visit>
constexpr void ForEachField(Record& record, const Visit& visit) {
  const auto visit_all = [&](auto&... fields) { (visit(fields), ...); };
  using V = SensorVela;
  if constexpr (OneOf<Record, V::ProcessorDiag, V::IpcErrorRate>) {
    auto& [a, b, c, d] = record;
    visit_all(a, b, c, d);
  } else if constexpr (OneOf<Record, V::DramException>) {
    auto& [a, b, c, d, e] = record;
    visit_all(a, b, c, d, e);
  } else if constexpr (OneOf<Record, V::QueueStress>) {
    auto& [a, b, c, d, e, f] = record;
    visit_all(a, b, c, d, e, f);
  } else if constexpr (OneOf<Record, V::SensorUsage>) {
    auto& [a, b, c, d, e, f, g] = record;
    visit_all(a, b, c, d, e, f, g);
  } else if constexpr (OneOf<Record, V::GatingContext>) {
    auto& [a, b, c, d, e, f, g, h, i] = record;
    visit_all(a, b, c, d, e, f, g, h, i);
  } else {
    static_assert(OneOf<Record, V::AadProxStats>);
    auto& [a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t] = record;
    visit_all(a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t);
  }
}

/// The number of fields that `ForEachField` visits.
template <typename Record>
constexpr std::size_t FieldCount() {
  std::size_t count = 0;
  Record record;
  ForEachField(record, [&](const auto&) { ++count; });
  return count;
}

/// Calls `visit` with the name and the value of each field of a record that is an object in a
/// trace.
template <OneOf<SensorVela::MemoryPressure> Record, typename Visit>
constexpr void ForEachNamedField(Record& memory, const Visit& visit) {
  visit("kind", memory.kind);
  visit("shared_value", memory.shared_value);
  visit("pressure_value_1", memory.pressure_value_1);
  visit("pressure_value_2", memory.pressure_value_2);
  visit("pressure_value_3", memory.pressure_value_3);
  visit("pressure_value_4", memory.pressure_value_4);
  visit("serviceability_value_1", memory.serviceability_value_1);
  visit("serviceability_value_2", memory.serviceability_value_2);
  visit("bucket_allocation_count", memory.bucket_allocation_count);
  visit("bucket_duration_ms", memory.bucket_duration_ms);
}

template <OneOf<SensorVela::TarnVelaProxEvent> Record, typename Visit>
constexpr void ForEachNamedField(Record& event, const Visit& visit) {
  visit("int_0", event.int_0);
  visit("int_1", event.int_1);
  visit("int_2", event.int_2);
  visit("int_3", event.int_3);
  visit("int_4", event.int_4);
  visit("int_5", event.int_5);
  visit("int_6", event.int_6);
  visit("int_7", event.int_7);
  visit("float_0", event.float_0);
  visit("float_1", event.float_1);
  visit("float_2", event.float_2);
  visit("float_3", event.float_3);
  visit("int_8", event.int_8);
  visit("int_9", event.int_9);
  visit("float_4", event.float_4);
  visit("float_5", event.float_5);
  visit("float_6", event.float_6);
}

}  // namespace sensorvela::trace_format
