// The interface for whoever prints or counts what a run means.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/cause.h"
#include "tools/facts/finding.h"
#include "tools/facts/sensor_facts.h"

namespace sensorvela::tools {

/// What became of an atom in the buffer of the service's process.
enum class BufferFate : std::uint8_t {
  /// The service took it, or it was in no buffer.
  kTaken,
  /// The process died.
  kLost,
  /// The run ended first.
  kLeft,
};

/// Why an atom never reached the stats service.
enum class DropReason : std::uint8_t {
  /// The lookup was refused.
  kRefused,
  /// The service manager failed while the lookup waited.
  kLookupFailed,
  /// One of these two: a recording does not say which.
  kRefusedOrFailed,
  /// The run ended first.
  kStillQueued,
};

struct AtomFact {
  /// None if the atom never reached the stats service.
  std::optional<testkit::Answer> answer;
  const Cause& cause;
  /// Null if it never reached the stats service.
  const SensorVela::VendorAtom* atom;
  /// None if neither the atom nor its cause says it.
  std::optional<std::int32_t> id = std::nullopt;
  /// Empty if the identifier is not known.
  std::string name = {};
  /// The sensor that the atom is about, or the one that its cause names.
  std::optional<SensorVela::SensorId> sensor = std::nullopt;
  /// None if it reached the stats service.
  std::optional<DropReason> dropped = std::nullopt;
  /// Its report succeeded if this is not `kTaken`.
  BufferFate fate = BufferFate::kTaken;
};

/// What the reporter thread does.
enum class ReporterState : std::uint8_t {
  kNotStarted,
  /// It waits for the stats service: at its start, or with a batch that it has taken.
  kWaiting,
  /// The service is registered, and it waits for the process of the service.
  kWaitingForProcess,
  kAsleep,
};

/// A step of the reporter thread that takes no time.
enum class ReporterStep : std::uint8_t {
  /// It sends a batch: all atoms that were queued when it took them.
  kSends,
  /// It drops the batch: there is no service.
  kDrops,
  /// A cycle has ended, and it gets diagnostics from the supplier.
  kUploads,
};

/// Why the host cannot find the stats service.
enum class AbsenceReason : std::uint8_t {
  kNotRegistered,
  kRefused,
  /// Refused, or the service manager failed: a recording does not say which.
  kRefusedOrFailed,
};

/// The host could not find the stats service. In a recording it can from a lookup that found the
/// service until one waits or finds none, and it can at first.
struct Outage {
  simulated::VirtualTime::Instant from;
  simulated::VirtualTime::Instant to;
  /// The one at `from`.
  AbsenceReason reason;
  /// The service had not been there before.
  bool is_first;
  /// It is not back: the run ends.
  bool lasts;
};

struct SensorSummary {
  SensorVela::SensorId sensor;
  Arrivals arrived = {};
  /// None if the stats service has accepted no report.
  std::optional<SampleCounts> reported = std::nullopt;
  NotReported not_reported = {};
  /// The span that the end of the run ends.
  std::optional<SensorSpan> last_span = std::nullopt;
};

struct Summary {
  /// Atoms that the stats service accepted.
  std::uint64_t delivered = 0;
  /// Atoms whose report failed or ended without a status.
  std::uint64_t failed = 0;
  /// Those of them that did not fit into the buffer of the service's process.
  std::uint64_t did_not_fit = 0;
  /// Atoms that were queued and never reached the service.
  std::uint64_t dropped = 0;
  /// The service has had a process of its own. The rest, to `lookups_awaited_process`, is 0
  /// otherwise.
  bool had_process = false;
  /// Atoms that were lost in its buffer when it died. None in a recording, which does not tell.
  std::optional<std::uint64_t> lost_in_buffer = 0;
  /// Atoms that it had not taken when the run ended.
  std::uint64_t left_in_buffer = 0;
  /// Lookups of a service that was registered which had to wait for its process.
  std::uint64_t lookups_awaited_process = 0;
  /// How long the longest of these has waited.
  std::chrono::nanoseconds longest_process_wait{0};
  /// Errors past the cap, for which no atom was queued.
  std::uint64_t blocked_by_cap = 0;
  /// How often the service went away, and for how long altogether. The time before it was there
  /// for the first time is none of them.
  std::uint64_t outages = 0;
  std::chrono::nanoseconds away = {};
  /// None without a diagnostics supplier, whose call is the only sign of a cycle's end.
  std::optional<std::uint64_t> cycles_ended;
  /// What looks wrong, the most severe first.
  std::vector<Finding> findings;
  /// Every sensor that had a sample, an enable or a disable, by ascending identifier.
  std::vector<SensorSummary> sensors;
};

/// The methods are called one at a time, in the order of what happens. Arguments are valid during
/// the call.
class RunObserver {
 public:
  using Instant = simulated::VirtualTime::Instant;

  virtual ~RunObserver() = default;

  /// So many atoms are queued from now on, or taken and not yet sent.
  virtual void OnQueueLength(Instant /*at*/, std::size_t /*atoms*/) {}
  /// Called once for each atom, in the order in which they were queued. One that went into the
  /// buffer of the service's process comes when that takes it, dies, or is left by the run's end.
  virtual void OnAtom(Instant /*at*/, const AtomFact& /*atom*/) {}
  /// The engine queued no atom for an error, because the error was past its cap, and logged `text`.
  /// The cause is an event.
  virtual void OnErrorBlocked(Instant /*at*/, const Cause& /*cause*/, std::string_view /*text*/) {}

  /// `atoms`: how many are sent or dropped.
  virtual void OnReporterStep(Instant /*at*/, ReporterStep /*step*/, std::size_t /*atoms*/) {}
  /// The reporter thread slept from its last step to the next one.
  virtual void OnReporterSlept(Instant /*from*/, Instant /*to*/) {}
  /// The reporter thread was in the state; steps do not end its sleep. `atoms`: how many it held
  /// while it waited.
  virtual void OnReporterStay(Instant /*from*/, Instant /*to*/, ReporterState /*state*/,
                              std::size_t /*atoms*/) {}

  virtual void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}
  virtual void OnSensorDisabled(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                                std::uint64_t /*samples_since_enable*/) {}
  virtual void OnSensorSpan(SensorVela::SensorId /*sensor*/, const SensorSpan& /*span*/) {}
  virtual void OnSample(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                        const SampleFact& /*sample*/) {}

  virtual void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                         std::string_view /*text*/) {}
  /// The service is back, or the run ends without it.
  virtual void OnOutage(const Outage& /*outage*/) {}
  /// The device is suspended from `at` on, for `duration`.
  virtual void OnSuspended(Instant /*at*/, std::chrono::nanoseconds /*duration*/) {}
  virtual void OnNote(Instant /*at*/, std::string_view /*text*/) {}
  virtual void OnRunEnd(Instant /*at*/, const Summary& /*summary*/) {}
};

}  // namespace sensorvela::tools
