// How far a long run is, for somebody who waits at a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>

#include "tools/report.h"

namespace sensorvela::replay {

/// Once a run has taken a second it shows, on a line of its own and some times a second, how far
/// it is; the line is erased when the run ends, however that is.
class Progress : public Report {
 public:
  /// `terminal` outlives it. `last_event` is the instant of the trace's last event. With
  /// `shares_terminal` the other reports print on the same terminal: then it comes before them in
  /// the replay, and clears the line for what they print.
  Progress(std::ostream& terminal, Instant last_event, bool shares_terminal);
  ~Progress() override;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Sample(Instant at, SensorVela::SensorId /*sensor*/) override { Tick(at); }
  void Reporter(Instant at, ReporterStep /*step*/) override { Tick(at); }

  void Atom(Instant at, const SensorVela::VendorAtom& atom, Answer answer) override;
  void LogLine(Instant at, int priority, std::string_view tag, std::string_view text) override;
  void Note(Instant at, std::string_view text) override;
  void Finish(Instant at, const Summary& summary) override;

 private:
  using Clock = std::chrono::steady_clock;

  void Tick(Instant at);
  void MakeRoom();
  void Erase();

  std::ostream& terminal_;
  const Instant last_event_;
  const bool shares_terminal_;
  bool is_shown_ = false;
  std::uint64_t ticks_ = 0;
  Clock::time_point next_;
};

}  // namespace sensorvela::replay
