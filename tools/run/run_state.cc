#include "tools/run/run_state.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace sensorvela::replay {

using platform::MutexLock;
using simulated::LookupStep;

namespace {

constexpr std::string_view kEndOfCycle = "end of a cycle";

}  // namespace

RunState::RunState(std::vector<RunObserver*> observers, bool observe_log,
                   const simulated::VirtualTime& time)
    : observers_(std::move(observers)), observe_log_(observe_log), time_(time) {}

void RunState::SetCause(const Cause& cause) {
  const MutexLock lock(mutex_);
  ChangeCause(cause);
}

Cause RunState::cause() const {
  const MutexLock lock(mutex_);
  return cause_;
}

void RunState::SetDiagnostics(const testkit::Diagnostics& diagnostics) {
  const MutexLock lock(mutex_);
  next_diagnostics_ = diagnostics;
}

void RunState::FollowRecording() {
  const MutexLock lock(mutex_);
  follows_recording_ = true;
}

void RunState::LimitReports(std::int64_t reports) {
  const MutexLock lock(mutex_);
  report_limit_ = reports;
  wait_for_limit_.End(mutex_);
}

bool RunState::HasReachedLimit() const {
  const MutexLock lock(mutex_);
  return reports_ >= report_limit_;
}

bool RunState::HasQueuedAtoms() const {
  const MutexLock lock(mutex_);
  return time_.Notifications() > taken_;
}

void RunState::AnswerSupplier(const testkit::Diagnostics& answer) {
  const MutexLock lock(mutex_);
  ChangeCause({time_.Now(), kEndOfCycle, {}});
  answers_.push_back(answer);
  wait_for_answer_.End(mutex_);
}

void RunState::OnEngineStart(bool has_supplier, bool looks_up_first) {
  const MutexLock lock(mutex_);
  is_starting_ = looks_up_first;
  if (has_supplier) summary_.cycles_ended = 0;
}

void RunState::OnEngineStop() {
  const MutexLock lock(mutex_);
  NotifyQueued();
  is_stopping_ = true;
  wait_for_limit_.End(mutex_);
  wait_for_answer_.End(mutex_);
}

void RunState::OnSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns) {
  const MutexLock lock(mutex_);
  sensor_tally_.BeginStretch(sensor);
  Notify(&RunObserver::OnSensorEnabled, time_.Now(), sensor, period_ns);
}

void RunState::OnSensorDisabled(SensorVela::SensorId sensor) {
  const MutexLock lock(mutex_);
  next_reports_ = sensor_tally_.PresentStretch(sensor);
  Notify(&RunObserver::OnSensorDisabled, time_.Now(), sensor);
}

void RunState::OnSample(const Cause& cause, SensorVela::SensorId sensor,
                        std::int64_t timestamp_ns) {
  const MutexLock lock(mutex_);
  ChangeCause(cause);
  sensor_tally_.CountSample(sensor);
  Notify(&RunObserver::OnSample, cause.at, sensor, timestamp_ns);
}

void RunState::OnErrorBlocked() {
  const MutexLock lock(mutex_);
  ++summary_.blocked_by_cap;
  Notify(&RunObserver::OnErrorBlocked, time_.Now(), cause_, last_log_text_);
}

void RunState::OnServiceChanged(bool is_available) {
  const MutexLock lock(mutex_);
  Notify(&RunObserver::OnServiceChanged, time_.Now(), is_available);
}

void RunState::OnSuspended(std::chrono::nanoseconds duration) {
  const MutexLock lock(mutex_);
  Notify(&RunObserver::OnSuspended, time_.Now(), duration);
}

void RunState::OnNote(std::string_view text) {
  const MutexLock lock(mutex_);
  Notify(&RunObserver::OnNote, time_.Now(), text);
}

void RunState::OnRunEnd() {
  const MutexLock lock(mutex_);
  DropOldest(waiting_.size());
  summary_.dropped = queued_ - summary_.delivered - summary_.failed;
  summary_.sensors = sensor_tally_.Summaries();
  Notify(&RunObserver::OnRunEnd, time_.Now(), summary_);
}

void RunState::OnLogLine(int priority, std::string_view tag, std::string_view text) {
  const MutexLock lock(mutex_);
  if (IsBeyondRecording()) return;
  last_log_text_ = text;
  if (observe_log_) Notify(&RunObserver::OnLogLine, time_.Now(), priority, tag, text);
}

void RunState::OnLookup(LookupStep step) {
  const MutexLock lock(mutex_);
  if (IsBeyondRecording()) return;
  taken_ = time_.Notifications();
  NotifyQueued();
  ReporterStep shown = step == LookupStep::kFinds ? ReporterStep::kSends : ReporterStep::kDrops;
  if (step == LookupStep::kWaits) {
    shown = ReporterStep::kWaits;
  } else if (std::exchange(is_starting_, false)) {
    shown = ReporterStep::kStarts;
  }
  // It takes the queue right before the first step of a lookup.
  if (!is_waiting_) batch_ = waiting_.size();
  is_waiting_ = shown == ReporterStep::kWaits;
  Notify(&RunObserver::OnReporterStep, time_.Now(), shown, batch_);
  if (shown == ReporterStep::kDrops) DropOldest(batch_);
}

bool RunState::OnReport(const SensorVela::VendorAtom& atom, Answer answer) {
  const MutexLock lock(mutex_);
  while (reports_ >= report_limit_ && !is_stopping_) wait_for_limit_.Wait(mutex_);
  if (reports_ >= report_limit_) return false;  // The recorded engine did not get to this one.
  ++reports_;
  ++(answer == Answer::kOk ? summary_.delivered : summary_.failed);
  QueuedAtom oldest = std::move(waiting_.front());
  waiting_.pop_front();
  oldest.cause.line.text = oldest.line_text;
  if (oldest.reports && answer == Answer::kOk) sensor_tally_.CountReport(*oldest.reports, atom);
  Notify(&RunObserver::OnAtomReported, time_.Now(), atom, answer, oldest.cause);
  return reports_ == report_limit_;
}

testkit::Diagnostics RunState::OnAsk(testkit::DiagnosticsItem asked) {
  const MutexLock lock(mutex_);
  if (asked == testkit::DiagnosticsItem::kProcessor) {
    ChangeCause({time_.Now(), kEndOfCycle, {}});
    summary_.cycles_ended = summary_.cycles_ended.value_or(0) + 1;
    diagnostics_ = next_diagnostics_;
    Notify(&RunObserver::OnReporterStep, time_.Now(), ReporterStep::kUploads, std::size_t{0});
    answers_.clear();
  }
  if (!follows_recording_) return diagnostics_;
  while (answers_.empty() && !is_stopping_) wait_for_answer_.Wait(mutex_);
  if (answers_.empty()) return {};
  testkit::Diagnostics answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

void RunState::NotifyQueued() {
  if (is_stopping_) return;  // The destructor notifies, too, but queues nothing.
  for (const std::uint64_t queued = time_.Notifications(); queued_ < queued; ++queued_) {
    waiting_.push_back({.reports = std::exchange(next_reports_, std::nullopt),
                        .cause = {cause_.at, cause_.what, {cause_.line.number}, cause_.atom_id},
                        .line_text = std::string(cause_.line.text)});
    Notify(&RunObserver::OnAtomQueued, cause_);
  }
}

void RunState::DropOldest(std::size_t atoms) {
  for (; atoms > 0; --atoms) {
    QueuedAtom& oldest = waiting_.front();
    oldest.cause.line.text = oldest.line_text;
    Notify(&RunObserver::OnAtomDropped, time_.Now(), oldest.cause);
    waiting_.pop_front();
  }
}

void RunState::ChangeCause(const Cause& cause) {
  NotifyQueued();
  cause_ = cause;
}

}  // namespace sensorvela::replay
