// Reports a run as tracks, marks and counters for a trace viewer.
#pragma once

#include <memory>
#include <ostream>

#include "tools/facts/run_observer.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// Writes the Trace Event Format to `out`, which must outlive the observer as `names` must. One
/// process has tracks for the reporter thread, the atoms (delivered, failed, dropped), the errors
/// blocked by the cap, the notes and the suspensions, and a counter of the queue's length. Another
/// has a track for each sensor and a counter of its samples in each minute.
///
/// The reporter thread's work takes no virtual time; only its waits and its sleep last.
std::unique_ptr<RunObserver> MakeViewerObserver(std::ostream& out, const SensorNames& names);

}  // namespace sensorvela::tools
