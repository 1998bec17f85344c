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
  facts_.ServiceChanges(std::nullopt);
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
  if (lookups_ended_ == plan_.lookups.size() && !plan_.has_end) LetReportsEnd(kNoLimit);
  time_.ReachDeadlines();
  time_.WakeAll();
  time_.WaitUntilSettled();
}

void RecordingFollower::Answer(const testkit::Diagnostics& answer) {
  facts_.SupplierAnswers();
  const MutexLock lock(mutex_);
  answers_.push_back(answer);
  wait_for_answer_.End(mutex_);
}

void RecordingFollower::LookupWaits() {
  lookup_waits_ = true;
  facts_.ServiceChanges(AbsenceReason::kNotRegistered);
  BeginLookup();
}

void RecordingFollower::EndLookup(bool found) {
  if (lookups_ended_ == plan_.lookups.size()) return;  // The file has been changed since.
  CheckReports();
  if (!std::exchange(lookup_waits_, false)) BeginLookup();
  ++lookups_ended_;
  facts_.ServiceChanges(found ? std::nullopt : std::optional(AbsenceReason::kRefusedOrFailed));
  LetReportsEnd(ReportsBeforeNextLookup());
  if (found) {
    simulated::AnswerServiceWaits(kStatsInstance, service_);
  } else {
    simulated::ReleaseServiceWaits(kStatsInstance);
  }
  time_.WaitUntilSettled();
}

void RecordingFollower::Stop() {
  CheckReports();
  time_.SetNotificationsWake(true);
  const MutexLock lock(mutex_);
  is_stopping_ = true;
  wait_for_drain_.End(mutex_);
  wait_for_limit_.End(mutex_);
  wait_for_answer_.End(mutex_);
}

bool RecordingFollower::AwaitReport() {
  const MutexLock lock(mutex_);
  while (reports_ >= report_limit_ && !is_stopping_) wait_for_limit_.Wait(mutex_);
  return reports_ < report_limit_ && !is_stopping_;
}

void RecordingFollower::ReportEnds() {
  const MutexLock lock(mutex_);
  ++reports_;
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

void RecordingFollower::AwaitDrain() {
  const MutexLock lock(mutex_);
  while (!may_drain_ && !is_stopping_) wait_for_drain_.Wait(mutex_);
  may_drain_ = false;
}

void RecordingFollower::BeginLookup() {
  if (IsAtStart()) return;
  {
    const MutexLock lock(mutex_);
    may_drain_ = true;
    wait_for_drain_.End(mutex_);
  }
  time_.WakeAll();
  time_.WaitUntilSettled();
  // Where the run differs from the recording, the thread may be elsewhere.
  const MutexLock lock(mutex_);
  may_drain_ = false;
}

std::int64_t RecordingFollower::ReportsBeforeNextLookup() const {
  return lookups_ended_ < plan_.lookups.size() ? plan_.lookups[lookups_ended_].reports
                                               : plan_.reports;
}

void RecordingFollower::LetReportsEnd(std::int64_t limit) {
  const MutexLock lock(mutex_);
  report_limit_ = limit;
  wait_for_limit_.End(mutex_);
}

void RecordingFollower::CheckReports() {
  const MutexLock lock(mutex_);
  if (!divergence_.empty() || reports_ == report_limit_ || report_limit_ == kNoLimit) return;
  divergence_ = "the recorded engine had made " + std::to_string(report_limit_) +
                " reports by then, that of the replay " + std::to_string(reports_);
}

}  // namespace sensorvela::tools
