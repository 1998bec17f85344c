// A run as a picture: tracks, marks and counters for a viewer of traces.
#pragma once

#include <memory>
#include <ostream>

#include "tools/run/run_observer.h"

namespace sensorvela::replay {

/// Writes the Trace Event Format onto `out`, which outlives the report. One process has the
/// reporter thread, the atoms by what became of them, the errors blocked by the cap, the notes and
/// the queue's length; another has a track for each sensor and its samples of each minute.
///
/// The reporter thread's work takes no virtual time; what lasts is its waiting and its sleep.
std::unique_ptr<RunObserver> MakeViewerObserver(std::ostream& out);

}  // namespace sensorvela::replay
