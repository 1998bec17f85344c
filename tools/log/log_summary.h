// What the library's lines in a log say together.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/log/error_count.h"
#include "tools/log/library_line.h"
#include "tools/log/log_line.h"

namespace sensorvela::tools {

/// No table of a summary has more rows.
inline constexpr std::size_t kMaxRows = 100;

/// The process of a line; nothing where the form of the line has no process.
using Pid = std::optional<std::int32_t>;

/// How often something is in the log, and where.
struct Occurrences {
  std::uint64_t count = 0;
  LogPosition first;
  LogPosition last;

  void Add(const LogPosition& position) {
    if (count++ == 0) first = position;
    last = position;
  }
};

enum class ServiceAtStart : std::uint8_t { kOnline, kWaiting, kNotDeclared, kNotFound };

/// An engine's start. Of the two lines that an engine then writes, either may be missing.
struct EngineStart {
  Pid pid;
  std::optional<std::int32_t> tid;  // The reporter thread.
  ServiceAtStart service = ServiceAtStart::kWaiting;
  std::optional<LogPosition> started;
  std::optional<LogPosition> wait_ended;

  /// How long the wait for the service took, in milliseconds; nothing if the log does not say.
  std::optional<std::int64_t> WaitMs() const;
};

/// Drains of one engine that found no service, one after the other. Nothing in the log says when it
/// came back.
struct ServiceAbsence {
  Pid pid;
  std::optional<std::int32_t> tid;  // The reporter thread.
  Occurrences drains;
};

/// At least one cycle has ended between the two lines. Of two such intervals of a process the
/// second begins where the first ends, or later: each has an end of its own.
struct CycleEnd {
  Pid pid;
  Interval between;
};

/// Why nothing is said of ends in a process, though a count in it starts afresh: the lines of two
/// engines show the same.
enum class WhyNoEnds : std::uint8_t {
  kNoProcess,       // The form of the lines does not tell the processes apart.
  kNoStart,         // The process's first line in the log is not an engine's start.
  kSeveralEngines,  // Nothing tells whose error a line is.
};

struct UntoldEnds {
  Pid pid;
  WhyNoEnds why;
};

/// Errors of one HAL call or of one type of runtime error. At least so many have occurred.
struct ErrorTally {
  std::uint64_t reported = 0;
  std::uint64_t blocked = 0;
  std::uint64_t missing = 0;  // Of both: those of which the log has no line.
  Occurrences lines;
};

/// An error as the library reports it.
struct ReportedError {
  std::int32_t enumerator;
  std::int32_t code;
  std::uint32_t sensor_high;
  auto operator<=>(const ReportedError&) const = default;
};

/// A table that takes no further row once it is full, and counts the lines that would need one.
template <typename Rows>
struct Limited {
  Rows rows;
  std::uint64_t further_lines = 0;

  bool Full() {
    if (rows.size() < kMaxRows) return false;
    ++further_lines;
    return true;
  }
};

/// The row of `key`, new if there is none; null if the table is full.
template <typename Key, typename Row>
Row* FindOrAdd(Limited<std::map<Key, Row>>& table, const Key& key) {
  const auto found = table.rows.find(key);
  if (found != table.rows.end()) return &found->second;
  return table.Full() ? nullptr : &table.rows[key];
}

/// The HAL errors, or the runtime errors.
struct ErrorTable {
  ErrorTally total;
  Limited<std::map<std::int32_t, ErrorTally>> by_enumerator;
  Limited<std::map<ReportedError, Occurrences>> by_sensor;
};

/// The library's lines of a log, together. Takes the same memory for a log of any size.
class LogSummary {
 public:
  LogSummary();

  /// Takes the log's next line, without its end.
  void AddLine(std::string_view text);

  /// The log goes on in another file.
  void EndFile() { log_lines_.EndMessage(); }

  /// The log ends; what may follow is another one, in which the numbers of processes mean others.
  /// Errors that are not in the log, and ends of cycles, are known only then.
  void EndLog();

  std::uint64_t lines = 0;
  std::uint64_t library_lines = 0;
  std::uint64_t unknown_lines = 0;  // With the library's tag, and none of its texts.
  std::uint64_t starts = 0;
  Limited<std::vector<EngineStart>> engines;
  std::uint64_t lost_drains = 0;
  Limited<std::vector<ServiceAbsence>> absences;
  std::uint64_t failed_reports = 0;
  Limited<std::map<std::int32_t, Occurrences>> failed_atoms;  // By the atom's identifier.
  ErrorTable hal_errors;
  ErrorTable runtime_errors;
  Limited<std::vector<CycleEnd>> cycle_ends;
  Limited<std::vector<UntoldEnds>> untold_ends;

 private:
  struct Thread {
    /// Its last line.
    LogPosition last;
    /// Of engines whose reporter thread it is: several where the form of the lines has no thread.
    std::uint64_t waiting_for_service = 0;
    /// The row of the only one that waits.
    std::optional<std::size_t> engine;
    /// Its row, until something shows that the service was back.
    std::optional<std::size_t> absence;
  };

  struct Process {
    LogPosition first;
    bool begins_with_start = false;
    bool has_several_engines = false;
    /// Of the engine: how far its reporter thread has come, and this thread.
    int step = 0;
    std::optional<std::int32_t> reporter_tid;
    /// In each of these a cycle has ended if this is all one engine.
    Limited<std::vector<Interval>> ends;
    std::uint64_t last_end = 0;  // The line before which the last one is.

    std::optional<WhyNoEnds> WhyUntold(const Pid& pid) const;
  };

  void Add(const LibraryLine& found, const LogLine& line, const LogPosition& position);
  /// Null if it is not followed.
  Thread* FindThread(const LogLine& line);
  void AddToProcess(LineKind kind, const LogLine& line, const LogPosition& position);
  void AddStart(ServiceAtStart service, const LogLine& line, const LogPosition& position);
  void AddWaitEnd(ServiceAtStart service, const LogLine& line, const LogPosition& position);
  void AddLostDrain(const LogLine& line, const LogPosition& position);
  void AddFailedReport(std::int32_t atom_id, const LogLine& line, const LogPosition& position);
  void AddError(const LibraryLine& found, const LogLine& line, const LogPosition& position);
  void AddCycleEnd(const Pid& pid, const LogPosition& after, const LogPosition& before);
  void TellMissingErrors();
  void TellCycleEnds();

  LogLines log_lines_;
  // Of this log.
  std::map<Pid, Process> processes_;
  std::map<std::pair<Pid, std::optional<std::int32_t>>, Thread> threads_;
  /// By process, whether it is a HAL error, and enumerator.
  std::map<std::tuple<Pid, bool, std::int32_t>, ErrorCount> counts_;
};

}  // namespace sensorvela::tools
