// What the lines of one kind of error in one process say of errors that the log has lost, and of
// ends of cycles.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "tools/log/log_line.h"

namespace sensorvela::tools {

/// Where a line is in the log.
struct LogPosition {
  std::uint64_t line = 0;  // Counted from 1; 0 where there is no line.
  LogTime time;
};

/// Between two lines.
struct Interval {
  LogPosition after;
  LogPosition before;
};

/// An engine counts the errors of a kind from the start of each cycle. It reports the first ten
/// with lines that have no number, and blocks those past them with lines that have the count. What
/// follows from the lines:
///
/// - A blocked line is written while the count is locked, as the end of a cycle is. So the blocked
///   lines of a cycle are in the order of their counts, none is overtaken by the cycle's end, and
///   none is followed by another of the cycle with the same or a lower count.
/// - A reported line is written without a lock. Its error was counted before it, nobody knows how
///   long: any number of lines may have overtaken it, also a cycle's end. A thread that is held up
///   or a clock that is set makes the times say nothing. But a thread writes one line after the
///   other: the error was counted after its thread's line before it.
///
/// Lost errors: blocked lines, each put after one with a lower count where there is one, form
/// chains, at least one for each cycle of each engine. A chain lacks the counts that it skips, and
/// ten reported errors that were counted before its first line. Each reported line is taken for one
/// of these ten if it may be. The chains are those that lack the least, so that no more is missing
/// than the log has lost, whichever engines the process has, and if engines come and go unseen.
///
/// Ends of cycles: if the process has one engine, a cycle has ended between
///
/// - a blocked line and a later one whose count is not higher;
/// - a blocked line and a later reported one that was counted after it;
/// - a line after which eleven reported errors were counted, and the last of these.
///
/// Each such interval has an end, and two that overlap may have different ones: their intersection
/// may have none.
class ErrorCount {
 public:
  /// `counted_after` is the line before of the same thread, line 0 if that is not known. Returns
  /// the line between which and this one a cycle has ended if the process has one engine, line 0
  /// for the engine's start; nothing if none is known to have ended.
  std::optional<LogPosition> Reported(const LogPosition& counted_after);
  /// The same. `count` is past the cap.
  std::optional<LogPosition> Blocked(const LogPosition& position, std::uint32_t count);

  /// At least so many errors have no line in the log so far.
  std::uint64_t missing_reported() const { return missing_reported_; }
  std::uint64_t missing_blocked() const { return missing_blocked_; }

 private:
  void StartChain(const LogPosition& position);

  /// The last counts of the chains.
  std::multiset<std::uint32_t> chain_counts_;
  /// How many reported errors each chain lacks, by its first line.
  std::map<std::uint64_t, std::uint32_t> lacking_;
  /// Reported errors that no chain lacks so far.
  std::uint64_t spare_reported_ = 0;
  std::uint64_t missing_reported_ = 0;
  std::uint64_t missing_blocked_ = 0;

  LogPosition blocked_;  // The last blocked line, and its count.
  std::uint32_t blocked_count_ = 0;
  /// The latest eleven lines, in order, after which a reported error was counted.
  std::vector<LogPosition> counted_after_;
};

}  // namespace sensorvela::tools
