// Folds repeats of a report's lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/facts/run_observer.h"

namespace sensorvela::tools {

/// A line that is printed for an instant.
struct ReportLine {
  enum class Look : std::uint8_t { kPlain, kWarning, kLoss };

  RunObserver::Instant at = {};
  std::string text = {};
  Look look = Look::kPlain;
  /// Printed in the place of a text that is longer than a line, unless it is empty.
  std::string short_text = {};
  /// How often the line came in a row, to be printed after its text; empty for once.
  std::string count = {};
  /// The event's line in the trace; 0 for none.
  std::size_t trace_line = 0;
  /// Compared in the place of the text, unless it is empty.
  std::string key = {};
};

/// Passes lines on. A line that comes several times in a row is passed on once, with the count. Of
/// a few lines that come in turns, the turns after the first become one line with the count. Lines
/// are the same if their keys are, whatever their instants.
///
/// Lines are held back until it is known that they are no repeat.
class RepeatFolder {
 public:
  using Print = std::function<void(const ReportLine&)>;

  explicit RepeatFolder(Print print) : print_(std::move(print)) {}

  void Add(ReportLine line);

  /// Passes on what is held back.
  void Flush();

 private:
  using Instant = RunObserver::Instant;

  /// A line and its repeats in a row.
  struct Run {
    ReportLine line;
    std::uint64_t times = 1;
    Instant last = {};
    std::size_t last_trace_line = 0;

    bool operator==(const Run& other) const {
      return line.key == other.line.key && times == other.times;
    }
  };

  void AddRun(const Run& run);
  /// Whether `run` is the next one of the lines that come in turns.
  bool ContinuesTurn(const Run& run);
  void EndTurns();
  void PrintRun(const Run& run);

  const Print print_;
  std::optional<Run> present_;
  /// The last runs that were passed on.
  std::deque<Run> printed_;
  /// The number of lines that come in turns; 0 if none do.
  std::size_t period_ = 0;
  /// The whole turns after the first, and the end of the last of them.
  std::uint64_t turns_ = 0;
  Instant turns_end_ = {};
  /// The lines of the present turn so far.
  std::vector<Run> turn_;
};

}  // namespace sensorvela::tools
