// Formats instants of virtual time for people.
#pragma once

#include <string>

#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::tools {

/// Hours, minutes, seconds: "14:23:10". Hours go on past 24: "26:00:00".
std::string ClockTime(simulated::VirtualTime::Instant instant);

/// To the nanosecond: "14:23:10.000000001".
std::string ExactClockTime(simulated::VirtualTime::Instant instant);

/// Like that, without the zeros at its end: "00:00:01.5", "00:00:02".
std::string ShortClockTime(simulated::VirtualTime::Instant instant);

}  // namespace sensorvela::tools
