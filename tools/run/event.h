// One event of a run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::replay {

class Replay;

/// A line of a trace. Whoever keeps one beyond the call that it came with must copy the text.
struct TraceLine {
  /// From 1; 0 for no line.
  std::size_t number = 0;
  std::string_view text = {};
};

/// Applies an event to the replay, at the event's instant.
using Action = std::function<void(Replay&)>;

struct Event {
  simulated::VirtualTime::Instant at = {};
  std::string_view kind;
  /// The identifier of the atoms that the event queues; 0 if it queues none.
  std::int32_t atom_id = 0;
  std::size_t line_number = 0;
  std::string line_text;
  Action action;

  TraceLine line() const { return {line_number, line_text}; }
};

/// Sets its argument to the next event of a run, in the order of time, and returns true; returns
/// false when there is none left.
using EventSource = std::function<bool(Event&)>;

}  // namespace sensorvela::replay
