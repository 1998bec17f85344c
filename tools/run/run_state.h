// The state that a run's main thread and the engine's reporter thread share.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/platform/simulated/reporter_wait.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/diagnostics.h>

#include "platform/sync.h"
#include "tools/run/run_observer.h"
#include "tools/run/sensor_tally.h"

#include "platform/thread_annotations.h"

namespace sensorvela::replay {

/// The present cause of queued atoms, the counts, and the observers. Every method takes the one
/// lock and calls the observers with it held.
class RunState {
 public:
  /// The observers and `time` must outlive the state. The observers get log lines only with
  /// `observe_log`.
  RunState(std::vector<RunObserver*> observers, bool observe_log,
           const simulated::VirtualTime& time);

  // Called by the main thread.

  /// Sets the cause of the atoms that are queued from now on. Its texts must stay valid until the
  /// next cause has been set.
  void SetCause(const Cause& cause) SENSORVELA_EXCLUDES(mutex_);
  Cause cause() const SENSORVELA_EXCLUDES(mutex_);

  /// What the supplier returns at the ends of cycles from now on.
  void SetDiagnostics(const testkit::Diagnostics& diagnostics) SENSORVELA_EXCLUDES(mutex_);

  /// The run follows a recording: the supplier waits for its answers, and a report past the limit
  /// waits until the limit is raised.
  void FollowRecording() SENSORVELA_EXCLUDES(mutex_);
  /// So many reports may end, counted since the engine's start.
  void LimitReports(std::int64_t reports) SENSORVELA_EXCLUDES(mutex_);
  bool HasReachedLimit() const SENSORVELA_EXCLUDES(mutex_);
  /// Whether atoms are queued that the reporter thread has not taken.
  bool HasQueuedAtoms() const SENSORVELA_EXCLUDES(mutex_);
  /// The supplier's answer to the engine's next question.
  void AnswerSupplier(const testkit::Diagnostics& answer) SENSORVELA_EXCLUDES(mutex_);

  /// `looks_up_first`: the first lookup is the one at the engine's start.
  void OnEngineStart(bool has_supplier, bool looks_up_first) SENSORVELA_EXCLUDES(mutex_);
  void OnEngineStop() SENSORVELA_EXCLUDES(mutex_);

  void OnSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns)
      SENSORVELA_EXCLUDES(mutex_);
  void OnSensorDisabled(SensorVela::SensorId sensor) SENSORVELA_EXCLUDES(mutex_);
  /// Sets the cause, too.
  void OnSample(const Cause& cause, SensorVela::SensorId sensor, std::int64_t timestamp_ns)
      SENSORVELA_EXCLUDES(mutex_);
  /// The error that has just been reported to the engine queued no atom.
  void OnErrorBlocked() SENSORVELA_EXCLUDES(mutex_);
  void OnServiceChanged(bool is_available) SENSORVELA_EXCLUDES(mutex_);
  void OnSuspended(std::chrono::nanoseconds duration) SENSORVELA_EXCLUDES(mutex_);
  void OnNote(std::string_view text) SENSORVELA_EXCLUDES(mutex_);
  void OnRunEnd() SENSORVELA_EXCLUDES(mutex_);

  // Called by the reporter thread; `OnLogLine` also by the main thread.

  void OnLogLine(int priority, std::string_view tag, std::string_view text)
      SENSORVELA_EXCLUDES(mutex_);
  void OnLookup(simulated::LookupStep step) SENSORVELA_EXCLUDES(mutex_);
  /// Returns whether the limit has been reached with this report.
  bool OnReport(const SensorVela::VendorAtom& atom, Answer answer) SENSORVELA_EXCLUDES(mutex_);
  /// What the supplier returns when the engine asks for `asked`. The first item marks the end of a
  /// cycle.
  testkit::Diagnostics OnAsk(testkit::DiagnosticsItem asked) SENSORVELA_EXCLUDES(mutex_);

 private:
  struct QueuedAtom {
    /// What it reports, if it is a disable's.
    std::optional<SensorTally::Stretch> reports;
    /// Without the text of its line, which is beside it.
    Cause cause;
    std::string line_text;
  };

  template <typename... Parameters, typename... Arguments>
  void Notify(void (RunObserver::*method)(Parameters...), const Arguments&... arguments)
      SENSORVELA_REQUIRES(mutex_) {
    for (RunObserver* observer : observers_) (observer->*method)(arguments...);
  }
  /// What the recorded engine did while it was destroyed is in the recording. What the run's engine
  /// does then is not a part of it.
  bool IsBeyondRecording() const SENSORVELA_REQUIRES(mutex_) {
    return follows_recording_ && is_stopping_;
  }
  /// Notifies the observers of the atoms queued since the last call.
  void NotifyQueued() SENSORVELA_REQUIRES(mutex_);
  void ChangeCause(const Cause& cause) SENSORVELA_REQUIRES(mutex_);
  /// Takes the oldest atoms out of the queue and notifies the observers of each.
  void DropOldest(std::size_t atoms) SENSORVELA_REQUIRES(mutex_);

  const std::vector<RunObserver*> observers_;
  const bool observe_log_;
  const simulated::VirtualTime& time_;

  mutable platform::Mutex mutex_;
  Summary summary_ SENSORVELA_GUARDED_BY(mutex_);
  SensorTally sensor_tally_ SENSORVELA_GUARDED_BY(mutex_);
  Cause cause_ SENSORVELA_GUARDED_BY(mutex_) = {};
  std::uint64_t queued_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// What the atom that is queued next reports, if it is a disable's.
  std::optional<SensorTally::Stretch> next_reports_ SENSORVELA_GUARDED_BY(mutex_);
  /// The atoms in the queue, and those that the reporter thread has taken.
  std::deque<QueuedAtom> waiting_ SENSORVELA_GUARDED_BY(mutex_);
  /// How many atoms the reporter thread has taken.
  std::size_t batch_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  bool is_waiting_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::string last_log_text_ SENSORVELA_GUARDED_BY(mutex_);
  bool is_stopping_ SENSORVELA_GUARDED_BY(mutex_) = false;
  /// The next lookup is the one at the engine's start.
  bool is_starting_ SENSORVELA_GUARDED_BY(mutex_) = false;
  testkit::Diagnostics next_diagnostics_ SENSORVELA_GUARDED_BY(mutex_);
  /// The diagnostics of the upload in progress.
  testkit::Diagnostics diagnostics_ SENSORVELA_GUARDED_BY(mutex_);
  /// The notifications before the last lookup: its batch has all atoms that were queued by then.
  std::uint64_t taken_ SENSORVELA_GUARDED_BY(mutex_) = 0;

  // For a run that follows a recording.

  bool follows_recording_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::int64_t reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  std::int64_t report_limit_ SENSORVELA_GUARDED_BY(mutex_) =
      std::numeric_limits<std::int64_t>::max();
  simulated::ReporterWait wait_for_limit_ SENSORVELA_GUARDED_BY(mutex_);
  std::deque<testkit::Diagnostics> answers_ SENSORVELA_GUARDED_BY(mutex_);
  simulated::ReporterWait wait_for_answer_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace sensorvela::replay

#include "platform/thread_annotations_end.h"
