// The connection to the platform's stats service. Only an engine's reporter thread comes here, with
// no engine lock held: every call may block until the service manager or the service answers.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <memory>
#include <string>

namespace sensorvela {

/// The interface of the service registered as `instance`; null when there is none. May wait for it
/// to register. Every drain looks the service up afresh, so a restarted service is found by the
/// next.
std::shared_ptr<aidl::android::frameworks::stats::IStats> LookUpStatsService(
    const std::string& instance);

/// Sends one atom. False when the service answers with an error or with no status at all.
bool ReportAtom(aidl::android::frameworks::stats::IStats& service,
                const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela
