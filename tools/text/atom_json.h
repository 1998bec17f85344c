// Atoms in JSON, and JSON as the tool writes it.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace sensorvela::replay {

/// Keeps the order of keys, and holds floats as floats, so that they print with no more digits than
/// a float needs.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

/// On one line. Bytes that are no text are replaced instead of refused.
std::string Dump(const Json& json, bool ascii_only);

/// NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
Json ToJson(const aidl::android::frameworks::stats::VendorAtomValue& value);

/// An object of the atom's values by their names.
Json NamedValues(const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela::replay
