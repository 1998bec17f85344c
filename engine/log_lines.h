// The formats of all lines that the library writes to the Android log: for the library, and for
// the tool that reads them.
#pragma once

namespace sensorvela {

// The wait for the stats service, at an engine's start. The first two begin it.
inline constexpr char kServiceNotRegisteredLine[] = "IStats service is not registered.";
inline constexpr char kWaitingForServiceLine[] = "Waiting for IStats service to come up.";
inline constexpr char kServiceOnlineLine[] = "IStats service online.";
inline constexpr char kNoServiceLine[] = "Failed to get IStats service.";

// The reporter thread. The number is the atom's identifier.
inline constexpr char kAtomsDroppedLine[] = "Failed to get IStats service. Atoms are dropped.";
inline constexpr char kReportFailedLine[] = "Failed to report atom [id = %d].";

// Errors: the enumerator, the error or code, the upper half of the sensor's identifier.
inline constexpr char kHalErrorLine[] = "Reporting HAL call [%d] error [%d] on sensor [0x%08x].";
inline constexpr char kRuntimeErrorLine[] =
    "Reporting runtime time error [%d] code [%d] on sensor [0x%08x].";

// Errors past the cap: the enumerator, its count in this cycle, the cap.
inline constexpr char kHalErrorBlockedLine[] =
    "HAL Error [%d] has occurred [%u] times in current cycle, upload blocked due to cap [%u] met.";
inline constexpr char kRuntimeErrorBlockedLine[] =
    "Runtime Error [%d] has occurred [%u] times in current cycle, upload blocked due to cap [%u] "
    "met.";

}  // namespace sensorvela
