// The library's name in the Android log and among the process's threads.
#pragma once

namespace sensorvela {

/// The tag of every line.
inline constexpr char kLogTag[] = "sensor-vela";

/// The name of every reporter thread.
inline constexpr char kReporterThreadName[] = "sensor-vela";

}  // namespace sensorvela
