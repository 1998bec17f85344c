#include "platform/simulated/reporter_wait.h"

#include "platform/simulated/timeline.h"

namespace sensorvela::simulated {

void ReporterWait::Wait(platform::Mutex& mutex) {
  is_waiting_ = true;
  timeline.AddWaiting(1);
  while (is_waiting_) ended_.wait(mutex);
}

void ReporterWait::End(platform::Mutex& /*mutex*/) {
  if (!is_waiting_) return;
  is_waiting_ = false;
  timeline.AddWaiting(-1);
  ended_.notify_all();
}

}  // namespace sensorvela::simulated
