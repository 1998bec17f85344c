// Reads an event trace: JSON Lines, one event per line, in the order of time.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/run/event.h"
#include "tools/trace/event_kinds.h"

namespace sensorvela::replay {

/// Says why a trace cannot be run, in one printable line: `FILE:LINE: what is wrong: what was
/// expected`.
class TraceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The whole content of the file at `path`, or of standard input for "-". Throws `TraceError` when
/// it cannot be read.
std::string ReadInput(const std::string& path);

/// The events of a trace, all of them checked. They refer to `text`; `path` is for messages. Throws
/// `TraceError` at the first mistake. Skips blank lines. `on_line`, if given, is called after each
/// line with the number of bytes read so far.
std::vector<Event> ParseTrace(const std::string& path, std::string_view text,
                              const std::function<void(std::size_t bytes)>& on_line = nullptr);

}  // namespace sensorvela::replay
