// Reads a sample train of a trace.
#pragma once

#include <sensorvela/engine/sensor_vela.h>

#include "tools/run/sample_trains.h"
#include "tools/trace/field_reader.h"

namespace sensorvela::tools {

/// Throws `EventError` for a train that lasts so long that its times could overflow.
SampleTrain ReadSampleTrain(FieldReader& fields, SensorVela::SensorId sensor);

}  // namespace sensorvela::tools
