// Makes text from a trace safe to print.
#pragma once

#include <string>
#include <string_view>

namespace sensorvela::replay {

/// `text` on one line: control characters are written as `\n`, `\t` or `\u001b`, everything else is
/// unchanged.
std::string Printable(std::string_view text);

/// `text` in double quotes, printable, and cut if it is too long for a message.
std::string Quoted(std::string_view text);

}  // namespace sensorvela::replay
