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

namespace sensorvela::tools {
namespace {

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

bool Selection::Add(const std::string& what, const SensorNames& names) {
  const auto named = names.Named(what);
  for (const SensorVela::SensorId sensor : named) sensors_.insert(sensor);
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
    sensors_.insert(sensor);
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

bool Selection::Has(std::optional<std::int32_t> atom_id,
                    const std::optional<SensorVela::SensorId>& sensor) const {
  if (!is_limited()) return true;
  const bool has_atom = atom_id ? atoms_.contains(*atom_id) : !atoms_.empty();
  return has_atom || (sensor && sensors_.contains(*sensor));
}

}  // namespace sensorvela::tools
