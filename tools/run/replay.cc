#include "tools/run/replay.h"

#include <android/binder_manager.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/testkit/destroy_engine.h>

namespace sensorvela::replay {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using testkit::kStatsInstance;
using testkit::SupplierKind;

Replay::Replay(std::vector<RunObserver*> observers, bool observe_log)
    : state_(std::move(observers), observe_log, time_),
      service_(ndk::SharedRefBase::make<testkit::StatsService>(
          [this](const SensorVela::VendorAtom& atom, Answer answer) {
            if (state_.OnReport(atom, answer)) simulated::UnregisterService(kStatsInstance);
            service_->TakeAtoms();  // The observers keep what they need.
          })),
      log_sink_([this](int priority, std::string_view tag, std::string_view text) {
        state_.OnLogLine(priority, tag, text);
      }),
      lookup_observer_([this](simulated::LookupStep step) { state_.OnLookup(step); }) {}

Replay::~Replay() {
  // After a run that has failed, perhaps for want of a thread, this needs none.
  if (engine_ != nullptr) state_.OnEngineStop();
  simulated::RefuseService(kStatsInstance);
  engine_.reset();
  simulated::ResetServices();
}

void Replay::Run(const EventSource& next, const std::function<bool()>& is_over) {
  for (std::size_t turn = 0; next(events_.at(turn)); turn = 1 - turn) {
    const Event& event = events_.at(turn);
    DeliverTrains(event.at, is_over);
    if (is_over()) return;
    MoveTo(event.at);
    state_.SetCause({event.at, event.kind, event.line(), event.atom_id});
    trains_.ForgetEnded();
    event.action(*this);
    time_.WaitUntilSettled();
  }
  DeliverTrains(simulated::VirtualTime::Instant::max(), is_over);
  if (is_over()) return;
  DestroyEngine();
  state_.OnRunEnd();
}

void Replay::StartEngine(SupplierKind supplier) {
  // The engine looks the service up at its start only if it is declared.
  state_.OnEngineStart(supplier != SupplierKind::kNone, AServiceManager_isDeclared(kStatsInstance));
  engine_ = testkit::MakeEngine(
      supplier, [this](testkit::DiagnosticsItem asked) { return state_.OnAsk(asked); });
}

void Replay::DeliverTrains(simulated::VirtualTime::Instant until,
                           const std::function<bool()>& is_over) {
  while (trains_.HasSampleBy(until) && !is_over()) {
    const SampleTrains::Sample sample = trains_.TakeNext();
    MoveTo(sample.arrival);  // Settles first, so each sample is complete before the next.
    state_.OnSample(
        {time_.Now(), "samples", sample.line, atoms::SensorFirstSampleReported::kAtomId},
        sample.sensor, sample.timestamp_ns);
    engine_->LogSensorLatency(sample.sensor, sample.timestamp_ns);
  }
  time_.WaitUntilSettled();
}

void Replay::EnableSensor(SensorVela::SensorId sensor, std::int64_t period_ns) {
  state_.OnSensorEnabled(sensor, period_ns);
  engine_->ReportHalSensorEnabled(sensor, period_ns);
}

void Replay::DisableSensor(SensorVela::SensorId sensor) {
  state_.OnSensorDisabled(sensor);
  engine_->ReportHalSensorDisabled(sensor);
}

void Replay::DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns) {
  state_.OnSample(state_.cause(), sensor, timestamp_ns);
  engine_->LogSensorLatency(sensor, timestamp_ns);
}

void Replay::StartTrain(const SampleTrain& train) {
  trains_.Start(train, time_.Now(), state_.cause().line);
}

void Replay::CutTrains() { trains_.Cut(); }

void Replay::SetDiagnostics(const testkit::Diagnostics& diagnostics) {
  state_.SetDiagnostics(diagnostics);
}

void Replay::DestroyEngine() {
  if (engine_ == nullptr) return;
  state_.OnEngineStop();
  testkit::DestroyEngine(time_, [this] { engine_.reset(); }, [this] { ReleaseServiceWaits(); });
}

void Replay::DeclareService() { simulated::DeclareService(kStatsInstance); }
void Replay::UndeclareService() { simulated::UndeclareService(kStatsInstance); }

void Replay::RegisterService() {
  ChangeService(true, is_refused_);
  simulated::RegisterService(kStatsInstance, service_);
}

void Replay::UnregisterService() {
  ChangeService(false, is_refused_);
  simulated::UnregisterService(kStatsInstance);
}

void Replay::RefuseService() {
  ChangeService(is_registered_, true);
  simulated::RefuseService(kStatsInstance);
}

void Replay::AllowService() {
  ChangeService(is_registered_, false);
  simulated::AllowService(kStatsInstance);
}

void Replay::ReleaseServiceWaits() { simulated::ReleaseServiceWaits(kStatsInstance); }

void Replay::AnswerNext(std::int32_t reports, Answer answer) {
  service_->AnswerNext(reports, answer);
}

void Replay::Suspend(std::chrono::nanoseconds duration) {
  state_.OnSuspended(duration);
  time_.Suspend(duration);
}

void Replay::Note(std::string_view text) { state_.OnNote(text); }

void Replay::ChangeService(bool is_registered, bool is_refused) {
  const bool was_available = is_registered_ && !is_refused_;
  is_registered_ = is_registered;
  is_refused_ = is_refused;
  const bool is_available = is_registered_ && !is_refused_;
  if (is_available != was_available) state_.OnServiceChanged(is_available);
}

void Replay::MoveTo(simulated::VirtualTime::Instant instant) {
  if (recording_ == nullptr) {
    time_.RunTo(instant);
  } else {
    time_.Suspend(instant - time_.Now());
  }
}

void Replay::FollowRecording(const RecordingPlan& plan) {
  recording_ = &plan;
  if (plan.service_declared) DeclareService();
  std::int64_t planned = 0;
  for (const RecordingPlan::Failure& failure : plan.failures) {
    service_->AnswerNext(failure.report - planned - 1, Answer::kOk);
    service_->AnswerNext(1, failure.answer);
    planned = failure.report;
  }
  state_.FollowRecording();
  state_.LimitReports(ReportsBeforeNextLookup());
}

void Replay::DeliverSamples(const std::vector<trace_format::Sample>& samples) {
  const Cause cause = state_.cause();
  for (const trace_format::Sample& sample : samples) {
    const std::chrono::nanoseconds arrival(sample.arrival_ns);
    MoveTo(arrival);
    state_.OnSample({arrival, cause.what, cause.line, cause.atom_id}, sample.sensor,
                    sample.timestamp_ns);
    engine_->LogSensorLatency(sample.sensor, sample.timestamp_ns);
  }
}

void Replay::EndCycle() {
  time_.ReachDeadlines();
  time_.JumpTo(time_.Now());
}

void Replay::AnswerSupplier(const testkit::Diagnostics& answer) { state_.AnswerSupplier(answer); }

// Each lookup of the run waits until the recording says how it ended. So the service is absent but
// for the time in which a lookup that found it sends its batch.

void Replay::LookupWaits() {
  lookup_waits_ = true;
  ChangeService(false, false);
  // If the lookup will find none, all atoms that are queued now are dropped with it, and those that
  // come while it waits are not. The run's lookup may have been made with a part of them only.
  if (lookups_ended_ < recording_->lookups.size() && !recording_->lookups[lookups_ended_].found &&
      state_.HasQueuedAtoms()) {
    DropQueuedAtoms();
    dropped_early_ = true;
  }
}

void Replay::EndLookup(bool found) {
  if (lookups_ended_ == recording_->lookups.size()) return;  // The file has been changed since.
  ++lookups_ended_;
  ChangeService(found, false);
  const bool waited = std::exchange(lookup_waits_, false);
  const bool dropped_early = std::exchange(dropped_early_, false);
  state_.LimitReports(ReportsBeforeNextLookup());
  if (found) {
    simulated::RegisterService(kStatsInstance, service_);
    time_.WaitUntilSettled();
    if (state_.HasReachedLimit()) simulated::UnregisterService(kStatsInstance);
  } else if (!waited && state_.HasQueuedAtoms()) {
    DropQueuedAtoms();
  } else if (!dropped_early) {
    ReleaseServiceWaits();
  }
  time_.WaitUntilSettled();
  // An atom that comes before the end of the cycle has been found by the engine that ended it.
  if (recording_->lookups[lookups_ended_ - 1].cycle_follows) time_.ReachDeadlines();
}

std::int64_t Replay::ReportsBeforeNextLookup() const {
  if (lookups_ended_ < recording_->lookups.size()) {
    return recording_->lookups[lookups_ended_].reports;
  }
  return recording_->reports.value_or(std::numeric_limits<std::int64_t>::max());
}

void Replay::DropQueuedAtoms() {
  simulated::RefuseService(kStatsInstance);
  time_.WaitUntilSettled();
  simulated::AllowService(kStatsInstance);
}

}  // namespace sensorvela::replay
