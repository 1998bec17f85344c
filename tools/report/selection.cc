#include "tools/report/selection.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;

/// Sets `number` if it is all of the text.
template <typename Int>
bool Read(std::string_view text, Int& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::optional<SensorVela::SensorId> SensorOf(const SensorVela::VendorAtom& atom) {
  using Tag = VendorAtomValue::Tag;
  const VendorAtomValue* const high = testkit::FindValue(atom, "sensor_id_high");
  const VendorAtomValue* const low = testkit::FindValue(atom, "sensor_id_low");
  if (high == nullptr || low == nullptr) return std::nullopt;
  if (high->getTag() != Tag::intValue || low->getTag() != Tag::intValue) return std::nullopt;
  return SensorVela::SensorId{static_cast<std::uint32_t>(high->get<Tag::intValue>()),
                              low->get<Tag::intValue>()};
}

bool Selection::Add(const std::string& what, const SensorNames& names) {
  const auto named = names.Named(what);
  for (const SensorVela::SensorId sensor : named) sensors_.insert({sensor.high, sensor.low});
  if (!named.empty()) return true;

  const std::size_t slash = what.find('/');
  SensorVela::SensorId sensor = {};
  if (slash != std::string::npos) {
    const bool is_sensor =
        Read(what.substr(0, slash), sensor.high) && Read(what.substr(slash + 1), sensor.low);
    if (is_sensor) sensors_.insert({sensor.high, sensor.low});
    return is_sensor;
  }
  if (std::int32_t id = 0; Read(what, id)) {
    atoms_.insert(id);
    return true;
  }
  const auto& atoms = testkit::AtomCatalogue();
  const auto atom = std::ranges::find(atoms, what, &testkit::AtomInfo::name);
  if (atom == atoms.end()) return false;
  atoms_.insert(atom->id);
  return true;
}

bool Selection::Has(const SensorVela::VendorAtom& atom) const {
  if (!is_limited() || atoms_.contains(atom.atomId)) return true;
  const auto sensor = SensorOf(atom);
  return sensor && HasSensor(*sensor);
}

bool Selection::HasLost(const std::optional<SensorVela::SensorId>& sensor) const {
  return !is_limited() || !atoms_.empty() || (sensor && HasSensor(*sensor));
}

}  // namespace sensorvela::replay
