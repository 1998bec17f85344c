// The sensors and the kinds of atoms to which a report is limited.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/text/names.h"

namespace sensorvela::replay {

class Selection {
 public:
  /// Adds the sensors of that name or the sensor HIGH/LOW, or the kind of atom of that name or
  /// identifier. Returns false if it is none of these.
  bool Add(const std::string& what, const SensorNames& names);

  /// Whether anything has been added. A selection to which nothing has been added has everything.
  bool is_limited() const { return !sensors_.empty() || !atoms_.empty(); }

  bool Has(const SensorVela::VendorAtom& atom) const;

  /// Has an atom that never reached the service: that of an event of the sensor. Its kind is not
  /// known, so it can be any of the kinds.
  bool HasLost(const std::optional<SensorVela::SensorId>& sensor) const;

  /// Whether the summary has the sensor: it has all of them where no sensor has been added.
  bool Summarizes(SensorVela::SensorId sensor) const {
    return sensors_.empty() || HasSensor(sensor);
  }

 private:
  bool HasSensor(SensorVela::SensorId sensor) const {
    return sensors_.contains({sensor.high, sensor.low});
  }

  std::set<std::pair<std::uint32_t, std::int32_t>> sensors_;
  std::set<std::int32_t> atoms_;
};

/// The sensor that the atom is about, if its values say so.
std::optional<SensorVela::SensorId> SensorOf(const SensorVela::VendorAtom& atom);

}  // namespace sensorvela::replay
