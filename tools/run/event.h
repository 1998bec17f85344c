// One event of a run.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::replay {

class Replay;

/// A line of a trace.
struct TraceLine {
  /// From 1; 0 for no line.
  std::size_t number = 0;
  /// A part of the trace's text, which must outlive this.
  std::string_view text = {};
};

/// Applies an event to the replay, at the event's instant.
using Action = std::function<void(Replay&)>;

struct Event {
  simulated::VirtualTime::Instant at;
  std::string_view kind;
  TraceLine line;
  Action action;
  /// The instant at which the run ends if this is the last event.
  simulated::VirtualTime::Instant run_end;
};

}  // namespace sensorvela::replay
