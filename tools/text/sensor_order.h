// The order of sensors by their identifiers.
#pragma once

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::tools {

/// Orders a map's sensors: by the high half first.
struct SensorOrder {
  bool operator()(SensorVela::SensorId a, SensorVela::SensorId b) const {
    return a.high != b.high ? a.high < b.high : a.low < b.low;
  }
};

}  // namespace sensorvela::tools
