// One event of a run.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::replay {

class Replay;

/// Where in a trace something stands.
struct TraceLine {
  /// From 1; 0 for no line.
  std::size_t number = 0;
  /// A part of the trace's text, which outlives it.
  std::string_view text = {};
};

/// What an event does to the replay at its instant.
using Action = std::function<void(Replay&)>;

struct Event {
  simulated::VirtualTime::Instant at;
  std::string_view kind;
  TraceLine line;
  Action action;
  /// When the run ends if this is the last event.
  simulated::VirtualTime::Instant run_end;
};

}  // namespace sensorvela::replay
