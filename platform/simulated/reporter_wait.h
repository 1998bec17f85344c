// A wait of a reporter thread in host code.
#pragma once

#include <condition_variable>

#include "../sync.h"

#include "../thread_annotations.h"

namespace sensorvela::simulated {

/// For a supplier's operation or a service's report that lets its reporter thread wait for another
/// thread. Meanwhile the thread's engine counts as settled. One thread at a time may wait.
class ReporterWait {
 public:
  ReporterWait() = default;
  ReporterWait(const ReporterWait&) = delete;
  ReporterWait& operator=(const ReporterWait&) = delete;

  /// Releases `mutex`, waits for the next `End`, and takes `mutex` again. Only in virtual time.
  void Wait(platform::Mutex& mutex) SENSORVELA_REQUIRES(mutex);

  /// Ends the wait, if there is one. The thread's engine counts as busy when this returns. The
  /// mutex is named only for Clang's proof that the caller holds it.
  void End(platform::Mutex& mutex) SENSORVELA_REQUIRES(mutex);

 private:
  // Guarded by the mutex of the two operations.
  bool is_waiting_ = false;
  std::condition_variable_any ended_;
};

}  // namespace sensorvela::simulated

#include "../thread_annotations_end.h"
