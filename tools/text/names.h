// Names that every output of the tool uses.
#pragma once

#include <string_view>

#include <sensorvela/testkit/stats_service.h>

namespace sensorvela::replay {

/// "ok", "error" or "no_status".
std::string_view AnswerName(testkit::Answer answer);

/// The letter of a log priority: "I", "E", or "?" for one that the library does not use.
std::string_view PriorityLetter(int priority);

}  // namespace sensorvela::replay
