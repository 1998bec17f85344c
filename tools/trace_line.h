// Where in a trace something stands.
#pragma once

#include <cstddef>
#include <string_view>

namespace sensorvela::replay {

struct TraceLine {
  /// From 1; 0 for no line.
  std::size_t number = 0;
  /// A part of the trace's text, which outlives it.
  std::string_view text = {};
};

}  // namespace sensorvela::replay
