// A sample as a recording has it.
#pragma once

#include <cstdint>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

namespace sensorvela::replay {

struct RecordedSample {
  SensorVela::SensorId sensor;
  simulated::VirtualTime::Instant arrival;
  std::int64_t timestamp_ns;
};

}  // namespace sensorvela::replay
