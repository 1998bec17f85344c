// Tells when a reporter thread is about to take the queue.
#pragma once

#include <functional>

namespace sensorvela::tools {

/// While it exists, every reporter thread calls `before_drain` before it takes the queue, with no
/// lock of the engine held. The call may wait. Constructed before the first engine and destroyed
/// after the last; only one may exist at a time.
class ScopedDrainObserver {
 public:
  explicit ScopedDrainObserver(std::function<void()> before_drain);
  ~ScopedDrainObserver();
  ScopedDrainObserver(const ScopedDrainObserver&) = delete;
  ScopedDrainObserver& operator=(const ScopedDrainObserver&) = delete;
};

}  // namespace sensorvela::tools
