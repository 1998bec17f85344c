// The name of the platform's stats service, and the calls to it. Only an engine's reporter thread
// makes them, with no engine lock held: a lookup may wait for the service, and a report for the
// call's end.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <memory>
#include <string>

namespace sensorvela {

/// The name under which the service is registered, as the device's manifest declares it.
inline std::string StatsInstance() {
  return std::string(aidl::android::frameworks::stats::IStats::descriptor) + "/default";
}

/// The interface of the service registered as `instance`. Waits for it to register, and then for
/// its process to answer, if nobody in this process has a reference to it. Null when the access is
/// refused, the service manager fails, or the service's process has died and is still registered.
/// Each drain of the queue looks the service up again, and so finds a restarted one.
std::shared_ptr<aidl::android::frameworks::stats::IStats> LookUpStatsService(
    const std::string& instance);

/// Sends one atom. Returns false when the call ends with an error or without a status. On a device
/// the call ends when the atom is handed over, whatever the service makes of it.
bool ReportAtom(aidl::android::frameworks::stats::IStats& service,
                const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela
