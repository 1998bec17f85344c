// The terminal that standard output may be.
#pragma once

#include <cstddef>
#include <optional>

namespace sensorvela::tools {

/// The columns of the terminal that standard output is: what COLUMNS says, or else the terminal; 80
/// if neither does. None if standard output is no terminal.
std::optional<std::size_t> TerminalWidth();

/// Whether standard output is a terminal that shows colours, and NO_COLOR does not forbid them.
bool ShowsColor();

}  // namespace sensorvela::tools
