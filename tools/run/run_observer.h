// The interface for observers of a run.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/run/event.h"
#include "tools/run/sensor_tally.h"

namespace sensorvela::replay {

using testkit::Answer;

struct Summary {
  /// Atoms that the stats service accepted.
  std::uint64_t delivered = 0;
  /// Atoms whose report failed or ended without a status.
  std::uint64_t failed = 0;
  /// Atoms that were queued and never reached the service.
  std::uint64_t dropped = 0;
  /// Errors past the cap, for which no atom was queued.
  std::uint64_t blocked_by_cap = 0;
  /// None without a diagnostics supplier, whose call is the only sign of a cycle's end.
  std::optional<std::uint64_t> cycles_ended;
  std::vector<SensorSummary> sensors;
};

/// The reason why an atom is queued.
struct Cause {
  simulated::VirtualTime::Instant at;
  /// The kind of the event, or "end of a cycle".
  std::string_view what;
  /// The event's line; the end of a cycle has none.
  TraceLine line;
  /// The atom's identifier; 0 at the end of a cycle, which queues several kinds.
  std::int32_t atom_id = 0;
};

/// A step of the reporter thread, as far as it is visible from outside.
enum class ReporterStep {
  /// It begins to wait for the stats service: at its start, or with a batch that it has taken.
  kWaits,
  /// The wait at its start is over, or there was none.
  kStarts,
  /// It sends a batch: all atoms that were queued when it took them.
  kSends,
  /// It drops the batch: there is no service.
  kDrops,
  /// A cycle has ended, and it gets diagnostics from the supplier.
  kUploads,
};

/// The methods are called one at a time, in the order of what happens. Texts, also that of a
/// cause's line, are valid during the call.
class RunObserver {
 public:
  using Instant = simulated::VirtualTime::Instant;

  virtual ~RunObserver() = default;

  /// Called once for each atom, before any other call about it. Atoms leave the queue in this
  /// order.
  virtual void OnAtomQueued(const Cause& /*cause*/) {}
  /// The stats service has received an atom.
  virtual void OnAtomReported(Instant /*at*/, const SensorVela::VendorAtom& /*atom*/,
                              Answer /*answer*/, const Cause& /*cause*/) {}
  /// The oldest atom in the queue will never reach the stats service: it was dropped, or the run
  /// ends with it in the queue. Called after the step that drops it.
  virtual void OnAtomDropped(Instant /*at*/, const Cause& /*cause*/) {}
  /// The engine queued no atom for an error, because the error was past its cap, and logged `text`.
  virtual void OnErrorBlocked(Instant /*at*/, const Cause& /*cause*/, std::string_view /*text*/) {}
  /// `batch`: how many atoms the reporter thread waits with, sends or drops; otherwise without
  /// meaning.
  virtual void OnReporterStep(Instant /*at*/, ReporterStep /*step*/, std::size_t /*batch*/) {}

  virtual void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                               std::int64_t /*period_ns*/) {}
  virtual void OnSensorDisabled(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}
  virtual void OnSample(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                        std::int64_t /*timestamp_ns*/) {}

  virtual void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                         std::string_view /*text*/) {}
  /// The host can find the stats service from now on, or no longer. In a recording it can until a
  /// lookup has waited or found none. A run begins without the service.
  virtual void OnServiceChanged(Instant /*at*/, bool /*is_available*/) {}
  /// The device is suspended from `at` on, for `duration`.
  virtual void OnSuspended(Instant /*at*/, std::chrono::nanoseconds /*duration*/) {}
  virtual void OnNote(Instant /*at*/, std::string_view /*text*/) {}
  virtual void OnRunEnd(Instant /*at*/, const Summary& /*summary*/) {}
};

}  // namespace sensorvela::replay
