// A sample as the recorder keeps it until it is written.
#pragma once

#include <cstdint>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::recorder {

struct Sample {
  SensorVela::SensorId sensor;
  /// The engine's reading of elapsed realtime in the call.
  std::int64_t arrival_ns;
  std::int64_t timestamp_ns;
};

}  // namespace sensorvela::recorder
