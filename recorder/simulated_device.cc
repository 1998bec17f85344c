// On a workstation, the device is suspended by a call.
#include <sensorvela/platform/simulated/virtual_time.h>

#include "recorder/next_definition.h"
#include "recorder/recordings.h"

namespace recorder = sensorvela::recorder;

[[gnu::visibility("default")]] void sensorvela::simulated::VirtualTime::Suspend(Instant duration) {
  static const auto next = recorder::NextDefinition(&VirtualTime::Suspend);
  (this->*next)(duration);
  recorder::Recordings::Get().ForEach(
      [](recorder::Recording& recording) { recording.Suspended(); });
}
