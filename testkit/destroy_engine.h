// The end of an engine whose reporter thread may be blocked.
#pragma once

#include <functional>

#include "../platform/simulated/virtual_time.h"

namespace sensorvela::testkit {

/// Runs `destroy`, which destroys one engine, on a thread of its own, calls `release` once the
/// engine has been asked to stop, and returns when `destroy` has returned.
///
/// An engine's destructor waits for its reporter thread, and that may wait for something else: for
/// the stats service, or in a report. That wait has to be under way when this is called, and has to
/// be released after the request to stop: a thread that is released before may wait again. Nobody
/// may queue an atom meanwhile.
void DestroyEngine(simulated::VirtualTime& time, const std::function<void()>& destroy,
                   const std::function<void()>& release);

}  // namespace sensorvela::testkit
