#include "tools/run/recording_follower.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <sensorvela/platform/simulated/service_manager.h>

namespace sensorvela::tools {

using platform::MutexLock;
using testkit::kStatsInstance;

namespace {
constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();
}  // namespace

RecordingFollower::RecordingFollower(const RecordingPlan& plan, simulated::VirtualTime& time,
                                     Facts& facts, std::shared_ptr<testkit::StatsService> service)
    : plan_(plan),
      time_(time),
      facts_(facts),
      service_(std::move(service)),
      report_limit_(ReportsBeforeNextLookup()) {
  time_.SetNotificationsWake(false);
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
  CheckReports();
  // A cycle ends only after the last batch was sent, also where no number of reports follows.
  const bool is_cut = lookups_ended_ == plan_.lookups.size() && !plan_.has_end;
  if (is_cut && !plan_.lookups.empty() && plan_.lookups.back().found) {
    LetReportsEnd(kNoLimit);
    SendBatch();
  }
  time_.ReachDeadlines();
  Wake();
}

void RecordingFollower::Answer(const testkit::Diagnostics& answer) {
  const MutexLock lock(mutex_);
  answers_.push_back(answer);
  wait_for_answer_.End(mutex_);
}

void RecordingFollower::LookupWaits() {
  lookup_waits_ = true;
  facts_.ServiceChanges(AbsenceReason::kUnknown);
  Wake();
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
  CheckReports();
  ++lookups_ended_;
  const bool waited = std::exchange(lookup_waits_, false);
  const bool dropped_early = std::exchange(dropped_early_, false);
  if (!dropped_early) Wake();
  facts_.ServiceChanges(found ? std::nullopt : std::optional(AbsenceReason::kUnknown));
  LetReportsEnd(ReportsBeforeNextLookup());
  if (found) {
    SendBatch();
  } else if (!waited && facts_.HasQueuedAtoms()) {
    DropQueuedAtoms();
  } else if (!dropped_early) {
    simulated::ReleaseServiceWaits(kStatsInstance);
  }
  time_.WaitUntilSettled();
}

void RecordingFollower::Stop() {
  CheckReports();
  time_.SetNotificationsWake(true);
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
  return plan_.reports;
}

bool RecordingFollower::HasReachedLimit() const {
  const MutexLock lock(mutex_);
  return reports_ >= report_limit_;
}

void RecordingFollower::CheckReports() {
  const MutexLock lock(mutex_);
  if (!divergence_.empty() || reports_ == report_limit_ || report_limit_ == kNoLimit) return;
  divergence_ = "the recorded engine had made " + std::to_string(report_limit_) +
                " reports by then, that of the replay " + std::to_string(reports_);
}

void RecordingFollower::LetReportsEnd(std::int64_t limit) {
  const MutexLock lock(mutex_);
  report_limit_ = limit;
  wait_for_limit_.End(mutex_);
}

void RecordingFollower::Wake() {
  time_.WakeAll();
  time_.WaitUntilSettled();
}

void RecordingFollower::SendBatch() {
  if (HasReachedLimit()) {
    simulated::AnswerServiceWaits(kStatsInstance, service_);
    return;
  }
  // The recorded batch may be more than one of the run's.
  simulated::RegisterService(kStatsInstance, service_);
  time_.WaitUntilSettled();
  simulated::UnregisterService(kStatsInstance);
}

void RecordingFollower::DropQueuedAtoms() {
  simulated::RefuseService(kStatsInstance);
  time_.WaitUntilSettled();
  simulated::AllowService(kStatsInstance);
}

}  // namespace sensorvela::tools
