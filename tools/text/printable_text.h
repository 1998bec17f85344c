// Text from a trace, made safe to print.
#pragma once

#include <string>
#include <string_view>

namespace sensorvela::replay {

/// `text` on one line and without control characters: each is written as `\n`, `\t` or `\u001b`.
/// All else stays as it is.
std::string Printable(std::string_view text);

/// `text` in double quotes, printable, and cut where it is longer than a message should be.
std::string Quoted(std::string_view text);

}  // namespace sensorvela::replay
