// Shows the progress of a long run on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/facts/run_observer.h"

namespace sensorvela::tools {

/// Once reading and running a trace have taken a second, shows the progress on one line, which it
/// updates several times a second. Erases the line when the run ends, also after a failure.
class Progress : public RunObserver {
 public:
  /// Returns the present moment.
  using Clock = std::function<std::chrono::steady_clock::time_point()>;

  /// `terminal` must outlive the object. With `shares_terminal` the other reports print on the same
  /// terminal; this must then come before them in the replay's list of observers, and erases its
  /// line before they print.
  Progress(std::ostream& terminal, bool shares_terminal,
           Clock clock = std::chrono::steady_clock::now);
  ~Progress() override;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `bytes` of the trace's `total` bytes have been read and checked.
  void Read(std::uint64_t bytes, std::uint64_t total);

  /// The whole trace has been read, and its run ends at `run_end`.
  void DoneReading(Instant run_end);

  void OnQueueLength(Instant at, std::size_t /*atoms*/) override { Tick(at); }
  void OnSample(Instant at, SensorVela::SensorId /*sensor*/,
                const SampleFact& /*sample*/) override {
    Tick(at);
  }
  void OnReporterStep(Instant at, ReporterStep /*step*/, std::size_t /*atoms*/) override {
    Tick(at);
  }

  void OnAtom(Instant /*at*/, const AtomFact& /*atom*/) override { MakeRoom(); }
  void OnErrorBlocked(Instant at, const Cause& /*cause*/, std::string_view /*text*/) override {
    Tick(at);
    MakeRoom();
  }
  void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                 std::string_view /*text*/) override {
    MakeRoom();
  }
  void OnSuspended(Instant /*at*/, std::chrono::nanoseconds /*duration*/) override { MakeRoom(); }
  void OnNote(Instant /*at*/, std::string_view /*text*/) override { MakeRoom(); }
  void OnRunEnd(Instant /*at*/, const Summary& /*summary*/) override { Erase(); }

 private:
  void Tick(Instant at);
  bool IsDue();
  void Show(const std::string& line);
  void MakeRoom();
  void Erase();

  std::ostream& terminal_;
  const bool shares_terminal_;
  const Clock clock_;
  Instant run_end_ = {};
  bool is_shown_ = false;
  std::uint64_t ticks_ = 0;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace sensorvela::tools
