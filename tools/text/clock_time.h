// An instant of virtual time, for a reader.
#pragma once

#include <string>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::replay {

/// Hours, minutes, seconds: "14:23:10". Days are not counted apart: "26:00:00".
std::string ClockTime(simulated::VirtualTime::Instant instant);

/// To the nanosecond: "14:23:10.000000001".
std::string ExactClockTime(simulated::VirtualTime::Instant instant);

}  // namespace sensorvela::replay
