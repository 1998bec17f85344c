// Lets a run follow a recording.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include <sensorvela/platform/simulated/reporter_wait.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

#include "platform/sync.h"
#include "tools/facts/facts.h"
#include "tools/run/recording_plan.h"

#include "platform/thread_annotations.h"

namespace sensorvela::tools {

/// Holds back the engine's lookups, reports and questions until the recording has them, whatever
/// the clocks say.
///
/// The reporter thread sleeps until the recorded one woke up: a notification does not wake it. Each
/// lookup of the run waits until the recording says how it ended. So the service is absent but for
/// the time in which a lookup that found it sends its batch. A report waits while the recorded
/// engine had not made it yet, and a question until it is answered.
class RecordingFollower {
 public:
  /// All arguments outlive the follower.
  RecordingFollower(const RecordingPlan& plan, simulated::VirtualTime& time, Facts& facts,
                    std::shared_ptr<testkit::StatsService> service);

  // The operations of a recording's events, which the main thread calls while the engine is
  // settled.

  void EndCycle();
  /// The supplier's answer to the engine's next question.
  void Answer(const testkit::Diagnostics& answer) SENSORVELA_EXCLUDES(mutex_);
  /// Something happens while the recorded engine's lookup waits.
  void LookupWaits();
  void EndLookup(bool found) SENSORVELA_EXCLUDES(mutex_);

  /// Nothing waits any more: the engine is about to be destroyed.
  void Stop() SENSORVELA_EXCLUDES(mutex_);

  /// How the run differs from the recording; empty while it does not.
  const std::string& divergence() const { return divergence_; }

  // Called by the reporter thread.

  /// Waits until the recorded engine has made this report. False if it did not get to it.
  bool AwaitReport() SENSORVELA_EXCLUDES(mutex_);
  /// The report has ended. Withdraws the service after the last report of the batch.
  void ReportEnds() SENSORVELA_EXCLUDES(mutex_);
  /// The first question of a cycle: answers that nobody has waited for are forgotten.
  void CycleEnds() SENSORVELA_EXCLUDES(mutex_);
  testkit::Diagnostics AwaitAnswer() SENSORVELA_EXCLUDES(mutex_);

 private:
  /// The reports that the recorded engine had made when its next lookup began.
  std::int64_t ReportsBeforeNextLookup() const;
  /// The run has made all reports that come before the next lookup.
  bool HasReachedLimit() const SENSORVELA_EXCLUDES(mutex_);
  /// So many reports of the run may end from now on.
  void LetReportsEnd(std::int64_t limit) SENSORVELA_EXCLUDES(mutex_);
  void CheckReports() SENSORVELA_EXCLUDES(mutex_);
  /// The reporter thread goes on to its lookup, if it sleeps.
  void Wake();
  /// The lookup that waits, and what it finds, send what the recorded batch had.
  void SendBatch();
  /// All atoms that are queued are dropped.
  void DropQueuedAtoms();

  const RecordingPlan& plan_;
  simulated::VirtualTime& time_;
  Facts& facts_;
  const std::shared_ptr<testkit::StatsService> service_;

  // Used by the main thread.

  /// The lookups of the recording that have ended.
  std::size_t lookups_ended_ = 0;
  /// Something has happened while the present lookup waits.
  bool lookup_waits_ = false;
  /// The present lookup's atoms have been dropped already.
  bool dropped_early_ = false;
  std::string divergence_;

  mutable platform::Mutex mutex_;
  bool is_stopping_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::int64_t reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// So many reports may end.
  std::int64_t report_limit_ SENSORVELA_GUARDED_BY(mutex_);
  simulated::ReporterWait wait_for_limit_ SENSORVELA_GUARDED_BY(mutex_);
  std::deque<testkit::Diagnostics> answers_ SENSORVELA_GUARDED_BY(mutex_);
  simulated::ReporterWait wait_for_answer_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace sensorvela::tools

#include "platform/thread_annotations_end.h"
