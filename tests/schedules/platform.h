// What surrounds the engine in a run: the clock, the service manager, the stats service and the
// log.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/schedules/explorer.h"

namespace sensorvela::schedules {

/// One in the whole program. It records what a host's maker could see of a run, one letter each:
///
///     a ... d  the stats service received that atom     e  that of an error
///     + 0 1 2  of an enable, of a disable (samples)
///     f g      of a first sample: its latency is right, wrong
///     p q      of processor and queue diagnostics       U u  the supplier's first and last calls
///     N F      the log: not registered, no service at the start
///     D X      atoms are dropped, failed to report      C c  an error past the cap, the next ones
///     T        six hours have passed              E      a recording has ended
class Platform {
 public:
  enum class Service : std::uint8_t { kUp, kAbsent, kRefused };

  static Platform& Get();

  // Reset before each run.

  std::int64_t now_ns = 0;
  bool declared = true;
  Service service = Service::kUp;
  bool report_of_a_fails = false;
  /// Whether the rules below hold. The recorder has a lock of its own around the engine's calls and
  /// in its reports.
  bool has_rules = true;
  /// Whether each reading of elapsed realtime is later than the one before.
  bool elapses = true;
  int suppliers = 0;
  /// Threads that wait on a condition variable, and how often they all have woken without a cause.
  int waiting = 0;
  int spurious_wakes = 0;

  Environment environment;
  // Steps of `environment`, with the budget 0.
  EnvironmentStep& six_hours() { return environment.steps[0]; }
  EnvironmentStep& service_comes_up() { return environment.steps[1]; }
  EnvironmentStep& spurious_wake() { return environment.steps[2]; }

  // For the threads of a run.

  /// The monotonic clock, which stands still but for the six hours.
  std::int64_t ReadClock();
  /// Elapsed realtime, which is a nanosecond later at each reading.
  std::int64_t ReadElapsedRealtime();
  void Record(char letter);
  const std::string& record() const { return record_; }
  /// Empties the record.
  void Forget() { record_.clear(); }

  // What the thread that runs does, in every run. Each fails the run at a step that comes too early
  // or too late: a drain looks the service up, reports its batch, releases the service and then
  // discards what it has reported, and takes no lock in between.

  void TakesLock();
  void DropsLock();
  /// Calls the service manager or the supplier.
  void CallsOut();
  void TakesService();
  void ReportsAtom(const void* atom);
  void ReleasesService();

 private:
  struct Thread {
    int locks = 0;
    bool has_service = false;
    /// Where the atoms reported since its last lock are.
    std::vector<const void*> reported;
  };

  Thread& ThisThread() { return threads_[static_cast<std::size_t>(CurrentThread())]; }
  Platform();
  void Reset();

  std::int64_t elapsed_ns_ = 0;
  std::string record_;
  std::array<Thread, kMaxThreads> threads_;
};

/// A part of each supplier. Counts those that exist.
class Supplier {
 public:
  Supplier() { ++Platform::Get().suppliers; }
  ~Supplier() { --Platform::Get().suppliers; }
  Supplier(const Supplier&) = delete;
  Supplier& operator=(const Supplier&) = delete;
};

}  // namespace sensorvela::schedules
