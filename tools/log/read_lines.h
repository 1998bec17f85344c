// Reads a log of any size in blocks.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace sensorvela::devicelog {

/// Calls `on_line` for each line of the file, without its end (LF or CRLF), and inflates what gzip
/// has compressed. A line of more than a mebibyte is given once, cut. Returns why the file, or the
/// rest of it, cannot be read; empty if all of it was.
std::string ReadLines(int file, const std::function<void(std::string_view line)>& on_line);

}  // namespace sensorvela::devicelog
