// The sensors and the kinds of atoms to which a report is limited.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/text/names.h"
#include "tools/text/sensor_order.h"

namespace sensorvela::tools {

class Selection {
 public:
  /// Adds the sensors of that name or the sensor HIGH/LOW or of that label, or the kind of atom of
  /// that name or identifier. Returns false if it is none of these.
  bool Add(const std::string& what, const SensorNames& names);

  /// Whether anything has been added. A selection to which nothing has been added has everything.
  bool is_limited() const { return !sensors_.empty() || !atoms_.empty(); }

  /// Has an atom of that identifier and sensor, as far as they are known. One without an identifier
  /// can be of any kind.
  bool Has(std::optional<std::int32_t> atom_id,
           const std::optional<SensorVela::SensorId>& sensor) const;

  /// Whether the summary has the sensor: it has all of them where no sensor has been added.
  bool Summarizes(SensorVela::SensorId sensor) const {
    return sensors_.empty() || sensors_.contains(sensor);
  }

 private:
  std::set<SensorVela::SensorId, SensorOrder> sensors_;
  std::set<std::int32_t> atoms_;
};

}  // namespace sensorvela::tools
