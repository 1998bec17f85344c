// Calls to the platform's stats service. Only an engine's reporter thread makes them, with no
// engine lock held: each may block until the service manager or the service answers.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <memory>
#include <string>

namespace sensorvela {

/// The interface of the service registered as `instance`; null when there is none. May wait for it
/// to register. Each drain of the queue looks the service up again, and so finds a restarted one.
std::shared_ptr<aidl::android::frameworks::stats::IStats> LookUpStatsService(
    const std::string& instance);

/// Sends one atom. Returns false when the service answers with an error or with no status at all.
bool ReportAtom(aidl::android::frameworks::stats::IStats& service,
                const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela
