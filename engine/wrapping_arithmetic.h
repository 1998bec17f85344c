// Arithmetic that wraps modulo 2^N. Hosts' times and counts are not validated, so every value must
// be safe to compute with.
#pragma once

namespace sensorvela {

template <typename Int>
Int WrappingAdd(Int a, Int b) {
  Int result;
  __builtin_add_overflow(a, b, &result);
  return result;
}

template <typename Int>
Int WrappingSubtract(Int a, Int b) {
  Int result;
  __builtin_sub_overflow(a, b, &result);
  return result;
}

}  // namespace sensorvela
