// The tag of every line that the library writes to the Android log.
#pragma once

namespace sensorvela {

inline constexpr char kLogTag[] = "sensor-vela";

}  // namespace sensorvela
