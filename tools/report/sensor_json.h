// A sensor's samples in the shape of the outputs for programs.
#pragma once

#include <sensorvela/engine/sensor_vela.h>

#include "tools/facts/run_observer.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::tools {

/// Adds the halves of the sensor's identifier and its name, if it has one.
void AddSensor(SensorVela::SensorId sensor, const SensorNames& names, Json& object);

/// Adds the name alone.
void AddSensorName(SensorVela::SensorId sensor, const SensorNames& names, Json& object);

/// The samples as they arrived. What there is none of is null.
Json ToJson(const Arrivals& arrivals);

/// How many samples are in no report, by the reason.
Json ToJson(const NotReported& not_reported);

}  // namespace sensorvela::tools
