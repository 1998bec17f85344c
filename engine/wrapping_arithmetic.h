// Arithmetic that wraps modulo 2^N for every argument: host-supplied times and counts are never
// validated, so that every one of them must be safe.
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
