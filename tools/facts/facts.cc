#include "tools/facts/facts.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

namespace sensorvela::tools {

using platform::MutexLock;
using simulated::LookupStep;
using testkit::Answer;

namespace {

/// The sensor that the atom is about; none if its values do not say it.
std::optional<SensorVela::SensorId> SensorIn(const SensorVela::VendorAtom& atom) {
  using Tag = aidl::android::frameworks::stats::VendorAtomValue::Tag;
  const auto* const high = testkit::FindValue(atom, "sensor_id_high");
  const auto* const low = testkit::FindValue(atom, "sensor_id_low");
  if (high == nullptr || low == nullptr) return std::nullopt;
  if (high->getTag() != Tag::intValue || low->getTag() != Tag::intValue) return std::nullopt;
  return SensorVela::SensorId{static_cast<std::uint32_t>(high->get<Tag::intValue>()),
                              low->get<Tag::intValue>()};
}

}  // namespace

Facts::Facts(std::vector<RunObserver*> observers, bool observe_log,
             const simulated::VirtualTime& time)
    : observers_(std::move(observers)), observe_log_(observe_log), time_(time) {}

void Facts::EventBegins(const std::shared_ptr<const EventInfo>& event) {
  const MutexLock lock(mutex_);
  const bool is_first = cause_.event == nullptr;
  cause_ = {time_.Now(), event};
  if (is_first && absence_) outage_ = {cause_.at, {}, *absence_, true, false};
}

void Facts::EngineStarts(bool has_supplier, bool looks_up_first) {
  const MutexLock lock(mutex_);
  is_starting_ = looks_up_first;
  engine_start_ = time_.Now();
  run_checks_.EngineStarts(MomentOf(cause_), has_supplier);
  if (has_supplier) summary_.cycles_ended = 0;
}

void Facts::EngineStops(bool follows_recording, bool by_host) {
  const MutexLock lock(mutex_);
  is_stopping_ = true;
  is_beyond_recording_ = follows_recording;
  if (follows_recording) summary_.lost_in_buffer = std::nullopt;
  if (!by_host) return;
  run_checks_.EngineDestroyed(MomentOf(cause_), outage_.has_value(), unsent_.size());
}

void Facts::RunEnds() {
  const MutexLock lock(mutex_);
  while (!buffered_.empty()) LeaveBuffer(BufferFate::kLeft);
  while (!unsent_.empty()) Drop(DropReason::kStillQueued);
  EndOutage(true);
  ChangeReporterState(ReporterState::kNotStarted);
  for (auto& [id, sensor] : sensors_) {
    SensorFacts& facts = sensor.facts;
    summary_.sensors.push_back(
        {id, facts.arrived(), facts.reported(), facts.not_reported(), facts.EndSpan(time_.Now())});
    sensor.checks.End(MomentOf(cause_));
    findings_.Describe(FindingKind::kReEnabled, id,
                       std::to_string(facts.not_reported().re_enabled) + " samples lost");
  }
  run_checks_.End(MomentOf(cause_));
  summary_.findings = findings_.All();
  Notify(&RunObserver::OnRunEnd, time_.Now(), summary_);
}

void Facts::SensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns) {
  const MutexLock lock(mutex_);
  auto& [facts, checks] = SensorOf(sensor);
  EndSpan(sensor, facts);
  facts.Enable(time_.Now(), period_ns);
  checks.Enable(MomentOf(cause_), period_ns);
  Notify(&RunObserver::OnSensorEnabled, time_.Now(), sensor);
}

void Facts::SensorDisabled(SensorVela::SensorId sensor) {
  const MutexLock lock(mutex_);
  auto& [facts, checks] = SensorOf(sensor);
  disable_ = Disable{sensor, facts.enables()};
  EndSpan(sensor, facts);
  facts.Disable();
  checks.Disable(MomentOf(cause_));
  Notify(&RunObserver::OnSensorDisabled, time_.Now(), sensor, facts.samples_since_enable());
}

void Facts::FirstSampleReported(SensorVela::SensorId sensor) {
  const MutexLock lock(mutex_);
  SensorOf(sensor).checks.FirstSampleReported(MomentOf(cause_));
}

void Facts::Sample(const std::shared_ptr<const EventInfo>& event, SensorVela::SensorId sensor,
                   std::int64_t timestamp_ns) {
  const MutexLock lock(mutex_);
  const Instant now = time_.Now();
  cause_.at = now;
  if (cause_.event != event) cause_.event = event;  // Cheaper than to assign for each sample.
  auto& [facts, checks] = SensorOf(sensor);
  checks.Sample({now, asleep_, event->line}, timestamp_ns);
  Notify(&RunObserver::OnSample, now, sensor, facts.Sample(now, timestamp_ns));
}

void Facts::ErrorBegins() {
  const MutexLock lock(mutex_);
  error_is_blocked_ = true;
}

void Facts::ErrorEnds() {
  const MutexLock lock(mutex_);
  if (!error_is_blocked_) return;
  ++summary_.blocked_by_cap;
  run_checks_.Blocked(MomentOf(cause_), cause_);
  Notify(&RunObserver::OnErrorBlocked, time_.Now(), cause_, last_log_text_);
}

void Facts::ServiceChanges(std::optional<AbsenceReason> absence) {
  const MutexLock lock(mutex_);
  absence_ = absence;
  if (!absence) {
    EndOutage(false);
  } else if (!outage_) {
    outage_ = {time_.Now(), {}, *absence, false, false};
  } else if (outage_->from == time_.Now()) {
    outage_->reason = *absence;
  }
}

void Facts::SupplierAnswers() {
  const MutexLock lock(mutex_);
  run_checks_.SupplierAnswered(MomentOf(cause_));
}

void Facts::ProcessStarts() {
  const MutexLock lock(mutex_);
  summary_.had_process = true;
}

void Facts::LostInBuffer() {
  const MutexLock lock(mutex_);
  LeaveBuffer(BufferFate::kLost);
}

void Facts::Suspended(std::chrono::nanoseconds duration) {
  const MutexLock lock(mutex_);
  asleep_ += duration;
  Notify(&RunObserver::OnSuspended, time_.Now(), duration);
}

void Facts::Note(std::string_view text) {
  const MutexLock lock(mutex_);
  Notify(&RunObserver::OnNote, time_.Now(), text);
}

void Facts::Lookup(LookupStep step) {
  const MutexLock lock(mutex_);
  if (is_beyond_recording_) return;
  // The thread takes the queue right before the first step of a lookup.
  const bool has_waited =
      reporter_ == ReporterState::kWaiting || reporter_ == ReporterState::kWaitingForProcess;
  if (!has_waited) batch_ = unsent_.size();
  if (step == LookupStep::kWaits) {
    ChangeReporterState(ReporterState::kWaiting);
    return;
  }
  if (step == LookupStep::kWaitsForProcess) {
    ++summary_.lookups_awaited_process;
    run_checks_.LookupAwaitsProcess(MomentOf(cause_));
    ChangeReporterState(ReporterState::kWaitingForProcess);
    return;
  }
  ChangeReporterState(ReporterState::kAsleep);
  run_checks_.LookupEnds(MomentOf(cause_));
  if (step == LookupStep::kFinds) run_checks_.ServiceFound();
  if (std::exchange(is_starting_, false)) return;
  const bool sends = step == LookupStep::kFinds;
  Notify(&RunObserver::OnReporterStep, time_.Now(),
         sends ? ReporterStep::kSends : ReporterStep::kDrops, batch_);
  while (!sends && batch_ > 0) Drop(ReasonAtLookup());
}

void Facts::Reported(const SensorVela::VendorAtom& atom, Answer answer) {
  const MutexLock lock(mutex_);
  if (is_beyond_recording_) return;
  run_checks_.Reported(MomentOf(unsent_.front().cause), answer);
  const std::optional<Disable> disable = TakeReported(atom, answer).disable;
  if (disable && answer == Answer::kOk) {
    SensorOf(disable->sensor).facts.CountReport(disable->enables, atom);
  }
}

void Facts::HandedOver(const SensorVela::VendorAtom& atom) {
  const MutexLock lock(mutex_);
  buffered_.push_back({RemoveOldest(), atom});
}

void Facts::NotHandedOver(const SensorVela::VendorAtom& atom, bool did_not_fit) {
  const MutexLock lock(mutex_);
  if (did_not_fit) {
    ++summary_.did_not_fit;
    run_checks_.DidNotFit(MomentOf(unsent_.front().cause));
  } else {
    run_checks_.Reported(MomentOf(unsent_.front().cause), Answer::kError);
  }
  TakeReported(atom, Answer::kError);
}

void Facts::TakenFromBuffer() {
  const MutexLock lock(mutex_);
  const auto [queued, atom] = buffered_.front();
  LeaveBuffer(BufferFate::kTaken);
  if (queued.disable) {
    SensorOf(queued.disable->sensor).facts.CountReport(queued.disable->enables, atom);
  }
}

void Facts::CycleEnds() {
  const MutexLock lock(mutex_);
  if (is_beyond_recording_) return;
  summary_.cycles_ended = summary_.cycles_ended.value_or(0) + 1;
  run_checks_.SupplierAsked({time_.Now(), asleep_, 0});
  ChangeReporterState(ReporterState::kAsleep);
  Notify(&RunObserver::OnReporterStep, time_.Now(), ReporterStep::kUploads, std::size_t{0});
}

void Facts::Notified() {
  const MutexLock lock(mutex_);
  if (is_stopping_) return;  // Also keeps out the thread that destroys the engine.
  if (std::this_thread::get_id() == main_thread_) {
    error_is_blocked_ = false;
    unsent_.push_back({cause_, std::exchange(disable_, std::nullopt)});
  } else {
    // In a run, the reporter thread queues only the atoms of an upload.
    unsent_.push_back({{time_.Now(), nullptr}, std::nullopt});
  }
  const Cause& cause = unsent_.back().cause;
  run_checks_.Queued(MomentOf(cause), unsent_.size(), cause.event == nullptr);
  Notify(&RunObserver::OnQueueLength, time_.Now(), unsent_.size());
}

void Facts::LogLine(int priority, std::string_view tag, std::string_view text) {
  const MutexLock lock(mutex_);
  if (is_beyond_recording_) return;
  last_log_text_ = text;
  if (observe_log_) Notify(&RunObserver::OnLogLine, time_.Now(), priority, tag, text);
}

Facts::QueuedAtom Facts::TakeReported(const SensorVela::VendorAtom& atom, Answer answer) {
  QueuedAtom oldest = RemoveOldest();
  ++(answer == Answer::kOk ? summary_.delivered : summary_.failed);
  TellOfAtom({.answer = answer,
              .cause = oldest.cause,
              .atom = &atom,
              .id = atom.atomId,
              .name = testkit::AtomName(atom),
              .sensor = SensorIn(atom)});
  return oldest;
}

void Facts::Drop(DropReason reason) {
  const QueuedAtom oldest = RemoveOldest();
  ++summary_.dropped;
  run_checks_.Dropped(MomentOf(oldest.cause), reason);
  const std::optional<std::int32_t> id = oldest.cause.atom_id();
  TellOfAtom({.answer = std::nullopt,
              .cause = oldest.cause,
              .atom = nullptr,
              .id = id,
              .name = id ? std::string(testkit::NameOfAtom(*id)) : "",
              .sensor = oldest.cause.sensor(),
              .dropped = reason});
}

DropReason Facts::ReasonAtLookup() const {
  if (absence_ == AbsenceReason::kRefused) return DropReason::kRefused;
  if (absence_ == AbsenceReason::kRefusedOrFailed) return DropReason::kRefusedOrFailed;
  // At the end of a run, the lookup that waits is ended by the run, not by the service manager.
  return is_stopping_ ? DropReason::kStillQueued : DropReason::kLookupFailed;
}

Facts::Sensor& Facts::SensorOf(SensorVela::SensorId id) {
  const std::uint32_t hash = id.high ^ static_cast<std::uint32_t>(id.low);
  auto& recent = recent_sensors_[hash % recent_sensors_.size()];
  if (recent != nullptr && recent->first.high == id.high && recent->first.low == id.low) {
    return recent->second;
  }
  auto found = sensors_.find(id);
  if (found == sensors_.end()) {
    SensorChecks checks(id, engine_start_, findings_);
    found = sensors_.emplace(id, Sensor{{}, std::move(checks)}).first;
  }
  recent = &*found;
  return found->second;
}

Facts::QueuedAtom Facts::RemoveOldest() {
  QueuedAtom oldest = std::move(unsent_.front());
  unsent_.pop_front();
  if (batch_ > 0) --batch_;
  Notify(&RunObserver::OnQueueLength, time_.Now(), unsent_.size());
  return oldest;
}

void Facts::LeaveBuffer(BufferFate fate) {
  const auto [queued, atom] = std::move(buffered_.front());
  buffered_.pop_front();
  if (fate == BufferFate::kTaken) ++summary_.delivered;
  if (fate == BufferFate::kLost) {
    summary_.lost_in_buffer = summary_.lost_in_buffer.value_or(0) + 1;
    run_checks_.LostInBuffer(MomentOf(queued.cause));
  }
  if (fate == BufferFate::kLeft) ++summary_.left_in_buffer;
  TellOfAtom({.answer = Answer::kOk,
              .cause = queued.cause,
              .atom = &atom,
              .id = atom.atomId,
              .name = testkit::AtomName(atom),
              .sensor = SensorIn(atom),
              .fate = fate});
}

void Facts::ChangeReporterState(ReporterState state) {
  const Instant now = time_.Now();
  if (reporter_ == ReporterState::kAsleep && now > last_step_) {
    Notify(&RunObserver::OnReporterSlept, last_step_, now);
  }
  last_step_ = now;
  if (state == reporter_) return;
  if (reporter_ == ReporterState::kWaitingForProcess) {
    summary_.longest_process_wait = std::max(summary_.longest_process_wait, now - reporter_since_);
  }
  if (reporter_ != ReporterState::kNotStarted) {
    Notify(&RunObserver::OnReporterStay, reporter_since_, now, reporter_, held_);
  }
  reporter_ = state;
  reporter_since_ = now;
  held_ = state == ReporterState::kAsleep ? 0 : batch_;
}

void Facts::EndOutage(bool lasts) {
  std::optional<Outage> outage = std::exchange(outage_, std::nullopt);
  if (!outage || outage->from == time_.Now()) return;
  outage->to = time_.Now();
  outage->lasts = lasts;
  if (!outage->is_first) {
    ++summary_.outages;
    summary_.away += outage->to - outage->from;
  }
  Notify(&RunObserver::OnOutage, *outage);
}

void Facts::EndSpan(SensorVela::SensorId sensor, SensorFacts& facts) {
  const std::optional<SensorSpan> span = facts.EndSpan(time_.Now());
  if (span) Notify(&RunObserver::OnSensorSpan, sensor, *span);
}

}  // namespace sensorvela::tools
