// What the tool prints of a run: a line for each thing that happened, and a summary.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include "platform/host/virtual_time.h"
#include "tools/sensor_tally.h"

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

/// Writes what happens, in the order of the calls, which come one at a time.
class Report {
 public:
  using Instant = host::VirtualTime::Instant;

  virtual ~Report() = default;
  virtual void Atom(Instant at, const aidl::android::frameworks::stats::VendorAtom& atom,
                    Answer answer) = 0;
  virtual void LogLine(Instant at, int priority, std::string_view tag, std::string_view text) = 0;
  virtual void Note(Instant at, std::string_view text) = 0;
  virtual void Finish(const Summary& summary) = 0;
};

/// Columns for a reader, onto `out`, which outlives the report. Control characters are escaped.
std::unique_ptr<Report> MakeTextReport(std::ostream& out);

/// JSON Lines for a program, onto `out`, which outlives the report: an object a line, its keys in a
/// fixed order and the first of them `kind`: atom, log, note, sensor or summary. A float reads back
/// as the same float; NaN and the infinities are the strings "NaN", "Infinity" and "-Infinity".
std::unique_ptr<Report> MakeJsonLinesReport(std::ostream& out);

}  // namespace sensorvela::replay
