// Makes the atoms that the simulation expects, without the library's builders.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

#include "tests/library/test_support.h"

namespace sensorvela::testing {

using Value = aidl::android::frameworks::stats::VendorAtomValue;

inline Value ToValue(std::int32_t value) { return Value::make<Value::intValue>(value); }
inline Value ToValue(std::int64_t value) { return Value::make<Value::longValue>(value); }

template <typename List>
Value ToList(const List& list) {
  return Value::make<Value::repeatedIntValue>(std::vector<std::int32_t>(list.begin(), list.end()));
}

/// An atom of these values.
template <typename... Integers>
VendorAtom Atom(int id, Integers... integers) {
  VendorAtom atom = Marker(id);
  (atom.values.push_back(ToValue(integers)), ...);
  return atom;
}

/// An atom of a sensor's identifier and these values.
template <typename... Integers>
VendorAtom SensorAtom(int id, SensorVela::SensorId sensor, Integers... integers) {
  return Atom(id, static_cast<std::int32_t>(sensor.high), sensor.low, integers...);
}

/// Adds the 32-bit fields of a record, from index `from` up to `to`, as ints.
template <typename Record>
void AddInts(VendorAtom& atom, const Record& record, std::size_t from = 0,
             std::size_t to = sizeof(Record) / 4) {
  const auto words = std::bit_cast<std::array<std::int32_t, sizeof(Record) / 4>>(record);
  for (std::size_t i = from; i < to; ++i) atom.values.push_back(ToValue(words[i]));
}

/// Like `AddInts`, for floats.
template <typename Record>
void AddFloats(VendorAtom& atom, const Record& record, std::size_t from, std::size_t to) {
  const auto words = std::bit_cast<std::array<float, sizeof(Record) / 4>>(record);
  for (std::size_t i = from; i < to; ++i) {
    atom.values.push_back(Value::make<Value::floatValue>(words[i]));
  }
}

}  // namespace sensorvela::testing
