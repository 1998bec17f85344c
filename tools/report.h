// Who is told what happens in a run, and what the tool prints of it: a line for each thing that
// happened, and a summary.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include "tools/sensor_tally.h"
#include "tools/trace_line.h"

namespace sensorvela::replay {

/// How the stats service answers a report.
enum class Answer { kOk, kError, kNoStatus };

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

/// "ok", "error" or "no_status".
std::string_view AnswerName(Answer answer);

/// What had an atom queued.
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

/// Is told what happens, in the order of the calls, which come one at a time.
class Report {
 public:
  using Instant = simulated::VirtualTime::Instant;

  virtual ~Report() = default;

  /// Comes once for each atom, before anything else about it. Atoms leave the queue in this order.
  virtual void AtomQueued(const Cause& /*cause*/) {}
  /// The stats service has been given an atom.
  virtual void Atom(Instant /*at*/, const SensorVela::VendorAtom& /*atom*/, Answer /*answer*/) {}
  virtual void BlockedByCap(Instant /*at*/, const Cause& /*cause*/, std::string_view /*text*/) {}
  virtual void Reporter(Instant /*at*/, ReporterStep /*step*/) {}

  virtual void SensorEnabled(Instant /*at*/, SensorVela::SensorId /*sensor*/,
                             std::int64_t /*period_ns*/) {}
  virtual void SensorDisabled(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}
  virtual void Sample(Instant /*at*/, SensorVela::SensorId /*sensor*/) {}

  virtual void LogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                       std::string_view /*text*/) {}
  virtual void Note(Instant /*at*/, std::string_view /*text*/) {}
  /// The run is over.
  virtual void Finish(Instant /*at*/, const Summary& /*summary*/) {}
};

/// Columns for a reader, onto `out`, which outlives the report. Control characters are escaped.
std::unique_ptr<Report> MakeTextReport(std::ostream& out);

/// JSON Lines for a program, onto `out`, which outlives the report: an object a line, its keys in a
/// fixed order and the first of them `kind`: atom, log, note, sensor or summary. A float reads back
/// as the same float; NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
std::unique_ptr<Report> MakeJsonLinesReport(std::ostream& out);

}  // namespace sensorvela::replay
