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
#include "tools/run/drain_observer.h"
#include "tools/run/recording_plan.h"

#include "platform/thread_annotations.h"

namespace sensorvela::tools {

/// Holds back the engine's steps until the recording has them, whatever the clocks say.
///
/// The reporter thread sleeps until the recorded one woke up: a notification does not wake it. It
/// takes the queue when the recorded one did, and its lookup waits until the recording says how it
/// ended: the service is never registered. A report waits while the recorded engine had not made
/// it yet, and a question until it is answered.
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
  void ReportEnds() SENSORVELA_EXCLUDES(mutex_);
  /// The first question of a cycle: answers that nobody has waited for are forgotten.
  void CycleEnds() SENSORVELA_EXCLUDES(mutex_);
  testkit::Diagnostics AwaitAnswer() SENSORVELA_EXCLUDES(mutex_);

 private:
  /// Waits until the recorded engine has taken the queue.
  void AwaitDrain() SENSORVELA_EXCLUDES(mutex_);

  /// The reporter thread goes on to its lookup, if it has not.
  void BeginLookup() SENSORVELA_EXCLUDES(mutex_);
  /// The present lookup is that at the engine's start, for which the queue is not taken.
  bool IsAtStart() const { return lookups_ended_ == 0 && plan_.service_declared; }
  /// The reports that the recorded engine had made when its next lookup began.
  std::int64_t ReportsBeforeNextLookup() const;
  /// So many reports of the run may end from now on.
  void LetReportsEnd(std::int64_t limit) SENSORVELA_EXCLUDES(mutex_);
  void CheckReports() SENSORVELA_EXCLUDES(mutex_);

  const RecordingPlan& plan_;
  simulated::VirtualTime& time_;
  Facts& facts_;
  const std::shared_ptr<testkit::StatsService> service_;
  const ScopedDrainObserver drain_observer_{[this] { AwaitDrain(); }};

  // Used by the main thread.

  /// The lookups of the recording that have ended.
  std::size_t lookups_ended_ = 0;
  /// The present lookup has begun.
  bool lookup_waits_ = false;
  std::string divergence_;

  platform::Mutex mutex_;
  bool is_stopping_ SENSORVELA_GUARDED_BY(mutex_) = false;
  /// The queue may be taken once.
  bool may_drain_ SENSORVELA_GUARDED_BY(mutex_) = false;
  simulated::ReporterWait wait_for_drain_ SENSORVELA_GUARDED_BY(mutex_);
  std::int64_t reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// So many reports may end.
  std::int64_t report_limit_ SENSORVELA_GUARDED_BY(mutex_);
  simulated::ReporterWait wait_for_limit_ SENSORVELA_GUARDED_BY(mutex_);
  std::deque<testkit::Diagnostics> answers_ SENSORVELA_GUARDED_BY(mutex_);
  simulated::ReporterWait wait_for_answer_ SENSORVELA_GUARDED_BY(mutex_);
};

}  // namespace sensorvela::tools

#include "platform/thread_annotations_end.h"
