// The interface through which a run shows what happens in it.
#pragma once

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
  /// Atoms that the stats service took.
  std::uint64_t delivered = 0;
  /// Atoms that it answered with an error or without a status.
  std::uint64_t failed = 0;
  /// Atoms that were queued and never reached it.
  std::uint64_t dropped = 0;
  /// Errors past the cap, for which no atom was queued.
  std::uint64_t blocked_by_cap = 0;
  /// None without a diagnostics supplier: then nothing shows the end of a cycle.
  std::optional<std::uint64_t> cycles_ended;
  std::vector<SensorSummary> sensors;
};

/// Why an atom is queued.
struct Cause {
  simulated::VirtualTime::Instant at;
  /// The kind of the event, or "end of a cycle".
  std::string_view what;
  /// The event's; the end of a cycle has none.
  TraceLine line;
};

/// What the reporter thread does, as far as it can be seen from outside.
enum class ReporterStep {
  /// It begins to wait for the stats service: before anything else, or with a batch in its hands.
  kWaits,
  /// The wait that comes before anything else is over, or there was none.
  kStarts,
  /// It sends a batch: everything that was queued when it took it.
  kSends,
  /// It drops the batch: there is no service.
  kDrops,
  /// A cycle has ended, and it asks the supplier for diagnostics.
  kUploads,
};

/// Its methods are called in the order in which things happen, one at a time.
class RunObserver {
 public:
  using Instant = simulated::VirtualTime::Instant;

  virtual ~RunObserver() = default;

  /// Comes once for each atom, before anything else about it. Atoms leave the queue in this order.
  virtual void OnAtomQueued(const Cause& /*cause*/) {}
  /// The stats service has received an atom.
  virtual void OnAtomReported(Instant /*at*/, const SensorVela::VendorAtom& /*atom*/,
                              Answer /*answer*/) {}
  /// The engine queued no atom for an error, because of its cap, and logged `text`.
  virtual void OnErrorBlocked(Instant /*at*/, const Cause& /*cause*/, std::string_view /*text*/) {}
  virtual void OnReporterStep(Instant /*at*/, ReporterStep /*step*/) {}

  virtual void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                               std::int64_t /*period_ns*/) {}
  virtual void OnSensorDisabled(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}
  virtual void OnSample(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}

  virtual void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                         std::string_view /*text*/) {}
  virtual void OnNote(Instant /*at*/, std::string_view /*text*/) {}
  virtual void OnRunEnd(Instant /*at*/, const Summary& /*summary*/) {}
};

}  // namespace sensorvela::replay
