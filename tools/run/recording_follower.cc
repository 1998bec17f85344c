#include "tools/run/recording_follower.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

#include <sensorvela/platform/simulated/service_manager.h>

namespace sensorvela::tools {

using platform::MutexLock;
using testkit::kStatsInstance;

RecordingFollower::RecordingFollower(const RecordingPlan& plan, simulated::VirtualTime& time,
                                     Facts& facts, std::shared_ptr<testkit::StatsService> service)
    : plan_(plan),
      time_(time),
      facts_(facts),
      service_(std::move(service)),
      report_limit_(ReportsBeforeNextLookup()) {
  if (plan.service_declared) simulated::DeclareService(kStatsInstance);
  facts_.ServiceChanges(AbsenceReason::kUnknown);
  std::int64_t planned = 0;
  for (const RecordingPlan::Failure& failure : plan.failures) {
    service_->AnswerNext(failure.report - planned - 1, testkit::Answer::kOk);
    service_->AnswerNext(1, failure.answer);
    planned = failure.report;
  }
}

void RecordingFollower::EndCycle() {
  time_.ReachDeadlines();
  time_.JumpTo(time_.Now());
}

void RecordingFollower::Answer(const testkit::Diagnostics& answer) {
  const MutexLock lock(mutex_);
  answers_.push_back(answer);
  wait_for_answer_.End(mutex_);
}

void RecordingFollower::LookupWaits() {
  lookup_waits_ = true;
  facts_.ServiceChanges(AbsenceReason::kUnknown);
  // If the lookup will find none, all atoms that are queued now are dropped with it, and those that
  // come while it waits are not. The run's lookup may have been made with a part of them only.
  if (lookups_ended_ < plan_.lookups.size() && !plan_.lookups[lookups_ended_].found &&
      facts_.HasQueuedAtoms()) {
    DropQueuedAtoms();
    dropped_early_ = true;
  }
}

void RecordingFollower::EndLookup(bool found) {
  if (lookups_ended_ == plan_.lookups.size()) return;  // The file has been changed since.
  const RecordingPlan::Lookup& lookup = plan_.lookups[lookups_ended_++];
  facts_.ServiceChanges(found ? std::nullopt : std::optional(AbsenceReason::kUnknown));
  const bool waited = std::exchange(lookup_waits_, false);
  const bool dropped_early = std::exchange(dropped_early_, false);
  {
    const MutexLock lock(mutex_);
    report_limit_ = ReportsBeforeNextLookup();
    wait_for_limit_.End(mutex_);
  }
  if (found) {
    simulated::RegisterService(kStatsInstance, service_);
    time_.WaitUntilSettled();
    if (HasReachedLimit()) simulated::UnregisterService(kStatsInstance);
  } else if (!waited && facts_.HasQueuedAtoms()) {
    DropQueuedAtoms();
  } else if (!dropped_early) {
    simulated::ReleaseServiceWaits(kStatsInstance);
  }
  time_.WaitUntilSettled();
  // The cycle's deadline has passed: an atom that comes now also ends the cycle.
  if (lookup.cycle_follows) time_.ReachDeadlines();
}

void RecordingFollower::Stop() {
  const MutexLock lock(mutex_);
  is_stopping_ = true;
  wait_for_limit_.End(mutex_);
  wait_for_answer_.End(mutex_);
}

bool RecordingFollower::AwaitReport() {
  const MutexLock lock(mutex_);
  while (reports_ >= report_limit_ && !is_stopping_) wait_for_limit_.Wait(mutex_);
  return reports_ < report_limit_ && !is_stopping_;
}

void RecordingFollower::ReportEnds() {
  {
    const MutexLock lock(mutex_);
    if (++reports_ != report_limit_) return;
  }
  simulated::UnregisterService(kStatsInstance);
}

void RecordingFollower::CycleEnds() {
  const MutexLock lock(mutex_);
  answers_.clear();
}

testkit::Diagnostics RecordingFollower::AwaitAnswer() {
  const MutexLock lock(mutex_);
  while (answers_.empty() && !is_stopping_) wait_for_answer_.Wait(mutex_);
  if (answers_.empty()) return {};
  testkit::Diagnostics answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

std::int64_t RecordingFollower::ReportsBeforeNextLookup() const {
  if (lookups_ended_ < plan_.lookups.size()) return plan_.lookups[lookups_ended_].reports;
  return plan_.reports.value_or(std::numeric_limits<std::int64_t>::max());
}

bool RecordingFollower::HasReachedLimit() const {
  const MutexLock lock(mutex_);
  return reports_ >= report_limit_;
}

void RecordingFollower::DropQueuedAtoms() {
  simulated::RefuseService(kStatsInstance);
  time_.WaitUntilSettled();
  simulated::AllowService(kStatsInstance);
}

}  // namespace sensorvela::tools
