// Reports a run as text in columns, for people.
#pragma once

#include <cstddef>
#include <memory>
#include <ostream>

#include "tools/facts/run_observer.h"
#include "tools/report/selection.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

struct TextOptions {
  /// Lines are broken to fit this many columns. A word that is longer has a line of its own.
  std::size_t width = 120;
  /// Folds and breaks nothing.
  bool wide = false;
  /// Prints nothing but the summary.
  bool summary_only = false;
  /// Prints nothing but what looks wrong.
  bool findings_only = false;
  /// Marks what went wrong by the colour escapes of terminals.
  bool color = false;
  Selection only = {};
};

/// Writes to `out`, which must outlive the report as `names` must, a line for each atom, lost atom,
/// blocked error, log line, note and suspension, and at the end a summary. It escapes what
/// `Printable` does. docs/output-format.md says what is folded.
std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out, const SensorNames& names,
                                            TextOptions options = {});

}  // namespace sensorvela::tools
