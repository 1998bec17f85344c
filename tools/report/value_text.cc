#include "tools/report/value_text.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {
namespace {

using aidl::android::frameworks::stats::VendorAtomValue;

std::string Domain(const SensorVela::VendorAtom& atom) {
  if (atom.reverseDomainName.empty()) return "";
  return "domain=" + Dump(atom.reverseDomainName, true);
}

/// `separator` stands between the elements of a list.
std::string ValueText(const VendorAtomValue& value, std::string_view separator) {
  const Json json = ToJson(value);
  if (json.is_array()) {
    std::string list;
    for (const Json& element : json) {
      if (!list.empty()) list += separator;
      list += Dump(element, true);
    }
    return '[' + list + ']';
  }
  const bool not_a_number = json.is_string() && value.getTag() == VendorAtomValue::floatValue;
  return not_a_number ? json.get<std::string>() : Dump(json, true);
}

bool SaysNothing(const Json& value, bool minus_one_is_none) {
  if (value.is_number()) return value == 0 || (minus_one_is_none && value == -1);
  if (value.is_string()) return value.get<std::string>().empty();
  // Also null, which stands for an absent list.
  return value.empty();
}

void AppendWord(std::string& text, const std::string& word) {
  if (!text.empty()) text += ' ';
  text += word;
}

}  // namespace

std::string AllValues(const AtomFact& fact, const SensorNames& names) {
  const SensorVela::VendorAtom& atom = *fact.atom;
  std::string text = Domain(atom);
  if (fact.sensor && !names.NameOf(*fact.sensor).empty()) {
    AppendWord(text, names.Label(*fact.sensor));
  }
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    AppendWord(text, testkit::ValueName(atom, i) + '=' + ValueText(atom.values[i], ","));
  }
  return text;
}

std::string FoldedValues(const AtomFact& fact, const SensorNames& names, bool has_lists) {
  const SensorVela::VendorAtom& atom = *fact.atom;
  const bool is_state = testkit::FindValue(atom, "sampling_period_ns") != nullptr;
  std::string text = Domain(atom);
  if (fact.sensor) AppendWord(text, names.Label(*fact.sensor));
  bool lacks_lists = false;
  std::string last_stem;
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    const std::string name = testkit::ValueName(atom, i);
    const bool is_in_label = fact.sensor && (name == "sensor_id_high" || name == "sensor_id_low");
    const Json value = ToJson(atom.values[i]);
    if (is_in_label || SaysNothing(value, is_state)) continue;
    if (value.is_array() && !has_lists) {
      lacks_lists = true;
      continue;
    }
    const std::string stem = name.substr(0, name.find_last_not_of("0123456789") + 1);
    const bool is_next = stem != name && stem == last_stem;
    AppendWord(text,
               name.substr(is_next ? stem.size() : 0) + '=' + ValueText(atom.values[i], ", "));
    last_stem = stem;
  }
  if (lacks_lists) AppendWord(text, "...");
  return text;
}

}  // namespace sensorvela::tools
