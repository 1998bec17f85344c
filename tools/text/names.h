// Names that every output of the tool uses.
#pragma once

#include <string>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/stats_service.h>

namespace sensorvela::replay {

/// "ok", "error" or "no_status".
std::string_view AnswerName(testkit::Answer answer);

/// The sensor's heading or label: "sensor 16/1", the halves of its identifier as in a trace.
std::string SensorName(SensorVela::SensorId sensor);

/// The letter of a log priority: "I", "E", or "?" for one that the library does not use.
std::string_view PriorityLetter(int priority);

}  // namespace sensorvela::replay
