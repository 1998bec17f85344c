// A sample of a recording.
#pragma once

#include <cstdint>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::trace_format {

struct Sample {
  SensorVela::SensorId sensor;
  /// The engine's reading of elapsed realtime in the call.
  std::int64_t arrival_ns;
  std::int64_t timestamp_ns;
};

}  // namespace sensorvela::trace_format
