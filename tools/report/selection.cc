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

#include "tools/text/atom_json.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;

/// Sets `number` if it is all of the text.
template <typename Int>
bool Read(std::string_view text, Int& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

/// The last word, without the brackets around it, as a label ends: "light (20/1)".
std::string WithoutName(const std::string& label) {
  const std::size_t space = label.rfind(' ');
  const std::string word = space == std::string::npos ? label : label.substr(space + 1);
  return word.starts_with('(') && word.ends_with(')') ? word.substr(1, word.size() - 2) : word;
}

}  // namespace

std::optional<SensorVela::SensorId> EventSensor::Of(TraceLine line) {
  if (line.number == line_) return sensor_;
  line_ = line.number;
  sensor_.reset();
  if (line.number == 0) return sensor_;
  const Json event = Json::parse(line.text);
  if (event.contains("sensor_high")) {
    sensor_ = {event.at("sensor_high").get<std::uint32_t>(),
               event.at("sensor_low").get<std::int32_t>()};
  }
  return sensor_;
}

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

  const std::string halves = WithoutName(what);
  const std::size_t slash = halves.find('/');
  if (slash != std::string::npos) {
    SensorVela::SensorId sensor = {};
    if (!Read(halves.substr(0, slash), sensor.high) ||
        !Read(halves.substr(slash + 1), sensor.low) ||
        (halves != what && what != names.Label(sensor))) {
      return false;
    }
    sensors_.insert({sensor.high, sensor.low});
    return true;
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

bool Selection::HasLost(std::int32_t atom_id,
                        const std::optional<SensorVela::SensorId>& sensor) const {
  if (!is_limited() || atoms_.contains(atom_id)) return true;
  if (atom_id == 0 && !atoms_.empty()) return true;
  return sensor && HasSensor(*sensor);
}

}  // namespace sensorvela::replay
