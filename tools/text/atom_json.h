// Converts atoms to JSON, and JSON to text.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace sensorvela::tools {

/// Keeps the order of keys. Stores floating-point numbers as `float`, so that they are printed with
/// no more digits than a float needs.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

/// The text of `json` on one line, printable. Bytes that are not valid UTF-8 are replaced.
std::string Dump(const Json& json, bool ascii_only);

/// NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
Json ToJson(const aidl::android::frameworks::stats::VendorAtomValue& value);

/// An object that has the atom's values by their names.
Json NamedValues(const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela::tools
