// Makes text from a trace safe to print.
#pragma once

#include <string>
#include <string_view>

namespace sensorvela::tools {

/// `text` on one line. Escaped, as in JSON, are control characters (`\n`, `\t`, `\u001b`), line
/// separators, and invisible characters such as those that change the direction of text. A byte
/// that is not UTF-8 becomes `\xff`. Everything else is unchanged.
std::string Printable(std::string_view text);

/// `text` in double quotes, printable, and cut if it is too long for a message.
std::string Quoted(std::string_view text);

}  // namespace sensorvela::tools
