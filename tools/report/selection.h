// The sensors and the kinds of atoms to which a report is limited.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/run/event.h"
#include "tools/text/names.h"

namespace sensorvela::replay {

class Selection {
 public:
  /// Adds the sensors of that name or the sensor HIGH/LOW or of that label, or the kind of atom of
  /// that name or identifier. Returns false if it is none of these.
  bool Add(const std::string& what, const SensorNames& names);

  /// Whether anything has been added. A selection to which nothing has been added has everything.
  bool is_limited() const { return !sensors_.empty() || !atoms_.empty(); }

  bool Has(const SensorVela::VendorAtom& atom) const;

  /// Has an atom that never reached the service: one of that identifier, queued by an event of the
  /// sensor. With the identifier 0 it can be of any kind.
  bool HasLost(std::int32_t atom_id, const std::optional<SensorVela::SensorId>& sensor) const;

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

/// The sensors that events of a trace name.
class EventSensor {
 public:
  /// None if the event names none. Keeps the last one: an event can be blocked a million times.
  std::optional<SensorVela::SensorId> Of(TraceLine line);

 private:
  std::size_t line_ = 0;
  std::optional<SensorVela::SensorId> sensor_;
};

}  // namespace sensorvela::replay
