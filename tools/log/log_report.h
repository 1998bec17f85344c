// Prints what a log says.
#pragma once

#include <ostream>

#include "tools/log/log_summary.h"

namespace sensorvela::tools {

/// For a reader: the totals, and a table for each kind of fact that the log has.
void PrintText(const LogSummary& summary, std::ostream& out);

/// For a program: JSON Lines. The first object has the version of the format and the totals.
void PrintJsonLines(const LogSummary& summary, std::ostream& out);

}  // namespace sensorvela::tools
