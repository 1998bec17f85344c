#include "tools/report/progress.h"

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

#include "tools/text/clock_time.h"

namespace sensorvela::tools {
namespace {

constexpr std::chrono::seconds kFirstAfter{1};
constexpr std::chrono::milliseconds kEvery{200};

// A tick costs much less than reading the clock.
constexpr std::uint64_t kTicksPerLook = 1024;

// Moves the cursor to the start of the line and clears the line.
constexpr char kErase[] = "\r\x1b[K";

}  // namespace

Progress::Progress(std::ostream& terminal, bool shares_terminal, Clock clock)
    : terminal_(terminal),
      shares_terminal_(shares_terminal),
      clock_(std::move(clock)),
      next_(clock_() + kFirstAfter) {}

Progress::~Progress() { Erase(); }

void Progress::Read(std::uint64_t bytes, std::uint64_t total) {
  if (!IsDue()) return;
  // A file may grow while it is read.
  Show("read " + std::to_string(bytes < total ? bytes * 100 / total : 100) + " %");
}

void Progress::DoneReading(Instant run_end) {
  Erase();
  run_end_ = run_end;
}

void Progress::Tick(Instant at) {
  if (IsDue()) Show("replayed to " + ClockTime(at) + " of " + ClockTime(run_end_));
}

bool Progress::IsDue() {
  if (++ticks_ % kTicksPerLook != 0) return false;
  const auto now = clock_();
  if (now < next_) return false;
  next_ = now + kEvery;
  return true;
}

void Progress::Show(const std::string& line) {
  terminal_ << kErase << line << std::flush;
  is_shown_ = true;
}

void Progress::MakeRoom() {
  if (shares_terminal_) Erase();
}

void Progress::Erase() {
  if (is_shown_) terminal_ << kErase << std::flush;
  is_shown_ = false;
}

}  // namespace sensorvela::tools
