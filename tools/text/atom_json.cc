#include "tools/text/atom_json.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/text/printable_text.h"
#include "trace_format/atom_value.h"

namespace sensorvela::tools {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

template <typename T>
Json ToJson(const T& value) {
  return value;
}

Json ToJson(float value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  return value;
}

template <typename T>
Json ToJson(const std::vector<T>& list);

template <typename T>
Json ToJson(const std::optional<T>& value) {
  return value ? ToJson(*value) : Json();
}

template <typename T>
Json ToJson(const std::vector<T>& list) {
  Json array = Json::array();
  // The elements of a `std::vector<bool>` are no bools: the cast converts them.
  for (const auto& element : list) array.push_back(ToJson(static_cast<const T&>(element)));
  return array;
}

}  // namespace

std::string Dump(const Json& json, bool ascii_only) {
  // Characters that are not printable are only in strings, in which the escapes mean the same.
  return Printable(json.dump(-1, ' ', ascii_only, Json::error_handler_t::replace));
}

Json ToJson(const VendorAtomValue& value) {
  Json json;
  trace_format::VisitValue(
      value, [&](const auto& content, std::string_view /*kind*/) { json = ToJson(content); });
  return json;
}

Json NamedValues(const VendorAtom& atom) {
  Json values = Json::object();
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    values[testkit::ValueName(atom, i)] = ToJson(atom.values[i]);
  }
  return values;
}

}  // namespace sensorvela::tools
