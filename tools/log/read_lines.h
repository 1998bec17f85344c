// Reads a stream of any size in blocks.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace sensorvela::devicelog {

/// Calls `on_line` for each line of the file, without its end (LF or CRLF). A line of more than a
/// mebibyte is given once, cut. Returns 0, or the `errno` of the read that has failed.
int ReadLines(int file, const std::function<void(std::string_view line)>& on_line);

}  // namespace sensorvela::devicelog
