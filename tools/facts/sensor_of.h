// Which sensor an atom is about.
#pragma once

#include <cstdint>
#include <optional>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::tools {

/// None if the atom's values do not say it.
inline std::optional<SensorVela::SensorId> SensorOf(const SensorVela::VendorAtom& atom) {
  using Tag = aidl::android::frameworks::stats::VendorAtomValue::Tag;
  const auto* const high = testkit::FindValue(atom, "sensor_id_high");
  const auto* const low = testkit::FindValue(atom, "sensor_id_low");
  if (high == nullptr || low == nullptr) return std::nullopt;
  if (high->getTag() != Tag::intValue || low->getTag() != Tag::intValue) return std::nullopt;
  return SensorVela::SensorId{static_cast<std::uint32_t>(high->get<Tag::intValue>()),
                              low->get<Tag::intValue>()};
}

}  // namespace sensorvela::tools
