#include "tools/progress.h"

#include "tools/clock_time.h"

namespace sensorvela::replay {
namespace {

constexpr std::chrono::seconds kFirstAfter{1};
constexpr std::chrono::milliseconds kEvery{200};

// A tick is much less work than a look at the clock.
constexpr std::uint64_t kTicksPerLook = 1024;

// To the line's start, and all of it cleared.
constexpr char kErase[] = "\r\x1b[K";

}  // namespace

Progress::Progress(std::ostream& terminal, Instant last_event, bool shares_terminal)
    : terminal_(terminal),
      last_event_(last_event),
      shares_terminal_(shares_terminal),
      next_(Clock::now() + kFirstAfter) {}

Progress::~Progress() { Erase(); }

void Progress::Atom(Instant /*at*/, const SensorVela::VendorAtom& /*atom*/, Answer /*answer*/) {
  MakeRoom();
}

void Progress::LogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                       std::string_view /*text*/) {
  MakeRoom();
}

void Progress::Note(Instant /*at*/, std::string_view /*text*/) { MakeRoom(); }

void Progress::Finish(Instant /*at*/, const Summary& /*summary*/) { Erase(); }

void Progress::Tick(Instant at) {
  if (++ticks_ % kTicksPerLook != 0) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kEvery;
  terminal_ << kErase << "replayed to " << ClockTime(at) << ", last event at "
            << ClockTime(last_event_) << std::flush;
  is_shown_ = true;
}

void Progress::MakeRoom() {
  if (shares_terminal_) Erase();
}

void Progress::Erase() {
  if (is_shown_) terminal_ << kErase << std::flush;
  is_shown_ = false;
}

}  // namespace sensorvela::replay
