#include "tools/facts/finding.h"

#include <array>
#include <cstddef>
#include <span>

namespace sensorvela::tools {
namespace {

constexpr FindingInfo kFindingKinds[] = {
    {FindingKind::kWallClock, "wall_clock", "samples",
     "a timestamp is more than ten years ahead of its sample's arrival",
     "The timestamps are of the wall clock: take them from elapsed realtime, which counts from "
     "boot."},
    {FindingKind::kMonotonicClock, "monotonic_clock", "samples",
     "after the device has slept for a second or more, at least 3 samples in 100 ms or more are "
     "behind by what it has slept, to a second",
     "The timestamps are of a clock that stands still while the device sleeps: take them from "
     "elapsed realtime."},
    {FindingKind::kMicroseconds, "microseconds", "samples",
     "at least 3 timestamps in a row, times 1000, are right to a second and to a tenth of the time "
     "since boot",
     "The timestamps are in microseconds: multiply them by 1000."},
    {FindingKind::kMilliseconds, "milliseconds", "samples",
     "at least 3 timestamps in a row, times 1000000, are right to a second and to a tenth of the "
     "time since boot",
     "The timestamps are in milliseconds: multiply them by 1000000."},
    {FindingKind::kClockOffset, "clock_offset", "samples",
     "at least 5 samples in 100 ms or more have a latency above 1 s or below -1 ms that stays the "
     "same to 100 ms",
     "The timestamps are of a clock with another start: subtract the offset between the sensor "
     "hub's clock and elapsed realtime."},
    {FindingKind::kTimestampsAhead, "timestamps_ahead", "samples",
     "a timestamp is more than 1 ms later than its sample's arrival, and no finding above says why",
     "Samples are from the future: synchronize the sensor hub's clock with elapsed realtime."},
    {FindingKind::kTimestampsBack, "timestamps_back", "samples",
     "a timestamp is earlier than the one before it since the enable",
     "Samples are not in the order of time: deliver each sensor's samples as it took them."},
    {FindingKind::kServiceNeverFound, "service_never_found", "atoms",
     "no lookup has found the service, and atoms were lost",
     "The stats service never came up: see that the device declares and starts it."},
    {FindingKind::kDroppedRefused, "dropped_refused", "atoms",
     "an atom was dropped because its lookup was refused",
     "The host may not look the stats service up: allow it in the device's access rules."},
    {FindingKind::kDroppedLookupFailed, "dropped_lookup_failed", "atoms",
     "an atom was dropped because its lookup ended without the service and was not refused",
     "The service had just died, or the service manager gave up while a lookup waited: see why the "
     "service was away."},
    {FindingKind::kDroppedRefusedOrFailed, "dropped_refused_or_failed", "atoms",
     "an atom of a recording was dropped because its lookup found no service",
     "A lookup ended without a service: look for a denial in the device's log, or for a restart of "
     "the service manager."},
    {FindingKind::kDestroyedInOutage, "destroyed_in_outage", "atoms",
     "the host destroys the engine while the service is away",
     "What was queued is lost, and a lookup that waits holds the destructor up: keep the engine "
     "until the service is back."},
    {FindingKind::kStillQueued, "still_queued", "atoms",
     "an atom was in the queue when the host destroyed the engine",
     "The engine was destroyed before it could send them: destroy it some time after the last "
     "event."},
    {FindingKind::kLostInBuffer, "lost_in_buffer", "atoms",
     "the stats service's process dies with an atom in its buffer",
     "They were sent, and nothing tells the host that they are lost: see why the service died."},
    {FindingKind::kDidNotFit, "did_not_fit", "atoms",
     "the report of an atom failed because the buffer of the service's process had no room",
     "The service takes atoms more slowly than they are sent, as after an outage: make it faster, "
     "or send less while it is away."},
    {FindingKind::kReportFailed, "report_failed", "atoms", "the report of an atom failed",
     "The stats service could not be called, and nothing is sent again: see whether its process "
     "died."},
    {FindingKind::kReportWithoutStatus, "report_without_status", "atoms",
     "the report of an atom ended without a status",
     "The call of the stats service returned nothing: see what stands in its place."},
    {FindingKind::kProcessSlow, "process_slow", "lookups",
     "a lookup of a service that is registered waits for more than a second for its process",
     "No atom is sent meanwhile, and the destructor waits: see what keeps the service's process "
     "busy, or hold a reference of the host's own to the service."},
    {FindingKind::kBacklog, "backlog", "atoms", "more than 1000 atoms wait in the queue",
     "The queue takes the host's memory while the service is away: see why it is, and send less."},
    {FindingKind::kNeverEnabled, "never_enabled", "samples",
     "a sample comes of a sensor that was never enabled",
     "No atom will have these samples: report the enable when the sensor is activated."},
    {FindingKind::kSampledWhileDisabled, "sampled_while_disabled", "samples",
     "a sample was taken after the sensor's disable",
     "No atom has these samples: stop the sensor before its disable, or report the enable."},
    {FindingKind::kSampledBeforeStart, "sampled_before_start", "samples",
     "a sample's timestamp is before the engine's start",
     "The sensor ran before the engine did: construct the engine first."},
    {FindingKind::kReEnabled, "re_enabled", "enables", "a sensor is enabled while it is enabled",
     "The samples since the enable before are forgotten: report the disable first."},
    {FindingKind::kDisabledTwice, "disabled_twice", "disables",
     "a sensor is disabled while it is disabled",
     "The second disable reports the same samples again: report each disable once."},
    {FindingKind::kDisabledNeverEnabled, "disabled_never_enabled", "disables",
     "a sensor is disabled that was never enabled",
     "The report says nothing: report the enable, and look for a wrong identifier."},
    {FindingKind::kBadPeriod, "bad_period", "enables",
     "the period of an enable is 0, negative, or below 100 us",
     "Nearly every sample counts as late: give the sampling period in nanoseconds."},
    {FindingKind::kFirstSampleTwice, "first_sample_twice", "samples",
     "the first sample since an enable is reported more than once",
     "The engine reports first samples itself: do not report them as well."},
    {FindingKind::kSilent, "silent", "times",
     "an enabled sensor without a sample, or one whose samples came steadily, has none for 100 "
     "periods and a second of the time awake",
     "The sensor has stopped: look for an error of its firmware at that time."},
    {FindingKind::kTooFast, "too_fast", "samples",
     "of at least 5 intervals since an enable, most are below 1/2.2 of the period",
     "Samples come much faster than asked for, and cost power: see that the sensor gets the "
     "period, in its unit."},
    {FindingKind::kTooSlow, "too_slow", "samples",
     "of at least 5 intervals since an enable, most are above 1.5 periods, and three in four are "
     "like the one before to a fifth",
     "Samples come much slower than asked for: see that the sensor gets the period, in its unit."},
    {FindingKind::kErrorStorm, "error_storm", "errors",
     "errors of a kind come more often in a cycle than the cap lets through",
     "These errors were not reported, only logged: see the ten before them, which were."},
    {FindingKind::kSupplierSlow, "supplier_slow", "answers",
     "the supplier takes more than a second for an answer",
     "No atom is sent meanwhile: collect the figures before the engine asks for them."},
    {FindingKind::kDiagnosticsMissing, "diagnostics_missing", "hours",
     "an engine with a supplier has been awake for 6 h 10 min, and no atom of diagnostics was "
     "queued",
     "No diagnostics came: see what the supplier answers, and whether the engine waits for the "
     "service."},
    {FindingKind::kPeriodJumps, "period_jumps", "enables",
     "the periods of two enables, one after the other, differ by a factor of 500 or more",
     "One of the two periods is likely to be in a wrong unit: give both in nanoseconds."},
    {FindingKind::kRateJumps, "rate_jumps", "enables",
     "of two enables with one period, each with at least 5 steady intervals, the intervals differ "
     "by a factor of 2 or more",
     "The sensor changed its rate although nobody asked: see whether it got the second period."},
    {FindingKind::kLatencyJumps, "latency_jumps", "enables",
     "of two enables, each with at least 5 samples, the least latencies differ by 20 ms or more "
     "and "
     "by a factor of 5 or more",
     "Samples take another time to arrive than before: see what has changed on their way."},
};

constexpr bool AreInOrder() {
  for (std::size_t i = 0; i < std::size(kFindingKinds); ++i) {
    if (static_cast<std::size_t>(kFindingKinds[i].kind) != i) return false;
  }
  return true;
}
static_assert(AreInOrder());

}  // namespace

std::span<const FindingInfo> FindingKinds() { return kFindingKinds; }

const FindingInfo& InfoOf(FindingKind kind) {
  return kFindingKinds[static_cast<std::size_t>(kind)];
}

}  // namespace sensorvela::tools
