// Follows the count of one kind of error in one engine, of which the log may have lost lines.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "tools/log/log_line.h"

namespace sensorvela::tools {

/// Where a line is in the log.
struct LogPosition {
  std::uint64_t line = 0;  // Counted from 1.
  LogTime time;
};

/// Between two lines.
struct Interval {
  LogPosition after;
  LogPosition before;
};

/// A cycle's first ten errors of a kind are reported, with lines that have no number. Those past
/// them are blocked, with lines that have the count, so that the first of them says how many were
/// reported, and each says how many were blocked. A cycle's end sets the count to zero.
class ErrorCount {
 public:
  /// What a line says of other lines.
  struct Finding {
    /// Errors of which the log has no line.
    std::uint64_t missing_reported = 0;
    std::uint64_t missing_blocked = 0;
    bool was_missing = false;  // This line was found to be missing before.
    /// At least one cycle has ended here.
    std::optional<Interval> cycle_end;
  };

  Finding Reported(const LogPosition& position);
  /// `count` is past the cap.
  Finding Blocked(const LogPosition& position, std::uint32_t count);

  /// Whether the last line is so long before an engine's start that it is another engine's.
  bool IsLongBefore(const LogPosition& start) const;

 private:
  /// The latest reported errors since the last one that was blocked, at most one more than a cycle
  /// can have.
  std::deque<LogPosition> reported_;
  std::uint32_t missing_reported_ = 0;  // In this cycle.
  std::uint32_t blocked_count_ = 0;     // The latest in this cycle; 0 if there is none.
  LogPosition blocked_;
  LogPosition last_;
};

}  // namespace sensorvela::tools
