// Names that every output of the tool uses.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/text/sensor_order.h"

namespace sensorvela::tools {

/// The names of a trace's sensors.
class SensorNames {
 public:
  /// Replaces the sensor's earlier name. An empty name takes it away.
  void Set(SensorVela::SensorId sensor, std::string_view name);

  /// As in the trace; empty for a sensor without a name.
  std::string_view NameOf(SensorVela::SensorId sensor) const;

  /// All sensors of that name.
  std::vector<SensorVela::SensorId> Named(std::string_view name) const;

  /// The sensor's heading or label, printable: "accelerometer (16/1)", or "sensor 16/1" for one
  /// without a name. The numbers are the halves of its identifier as in a trace.
  std::string Label(SensorVela::SensorId sensor) const;

 private:
  std::map<SensorVela::SensorId, std::string, SensorOrder> names_;
};

/// "ok", "error" or "no_status".
std::string_view AnswerName(testkit::Answer answer);

/// The letter of a log priority: "I", "E", or "?" for one that the library does not use.
std::string_view PriorityLetter(int priority);

}  // namespace sensorvela::tools
