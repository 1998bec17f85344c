// One event of a run.
#pragma once

#include <functional>
#include <memory>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/facts/cause.h"

namespace sensorvela::tools {

class Replay;

/// Applies an event to the replay, at the event's instant.
using Action = std::function<void(Replay&)>;

struct Event {
  simulated::VirtualTime::Instant at = {};
  std::shared_ptr<const EventInfo> info;
  Action action;
};

/// Sets its argument to the next event of a run, in the order of time, and returns true; returns
/// false when there is none left.
using EventSource = std::function<bool(Event&)>;

}  // namespace sensorvela::tools
