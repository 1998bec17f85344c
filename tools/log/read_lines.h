// Reads the lines of a log.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/input/input.h"

namespace sensorvela::tools {

/// Calls `on_line` for each line, without its end (LF or CRLF). A line of more than a mebibyte is
/// given once, cut. Returns why the input, or the rest of it, cannot be read; empty if all of it
/// was.
std::string ReadLines(const Input& input,
                      const std::function<void(std::string_view line)>& on_line);

}  // namespace sensorvela::tools
