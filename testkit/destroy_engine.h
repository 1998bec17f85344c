// Destroys an engine whose reporter thread may wait for something.
#pragma once

#include <functional>

#include "../platform/simulated/virtual_time.h"

namespace sensorvela::testkit {

/// Runs `destroy`, which destroys one engine, on a new thread. Calls `release` once the destructor
/// has asked the reporter thread to stop, and returns when `destroy` has returned.
///
/// An engine's destructor waits for its reporter thread, which may itself wait: for the
/// stats service, or in a report. That wait must have begun before this is called (for a wait
/// for the service, call `time.WaitUntilSettled()` first), and `release` ends it after the request
/// to stop: a thread released earlier might wait again.
///
/// Nothing may queue an atom during the call, `destroy` included, or the call may hang. For a host
/// whose destructor reports something, use `World::FailServiceManager` instead.
void DestroyEngine(simulated::VirtualTime& time, const std::function<void()>& destroy,
                   const std::function<void()>& release);

}  // namespace sensorvela::testkit
