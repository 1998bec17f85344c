#include "tools/run/replay.h"

#include <android/binder_manager.h>

#include <cstddef>
#include <utility>

#include <sensorvela/testkit/destroy_engine.h>

namespace sensorvela::replay {

using testkit::kStatsInstance;
using testkit::SupplierKind;

Replay::Replay(std::vector<RunObserver*> observers, bool observe_log)
    : state_(std::move(observers), observe_log, time_),
      service_(ndk::SharedRefBase::make<testkit::StatsService>(
          [this](const SensorVela::VendorAtom& atom, Answer answer) {
            state_.OnReport(atom, answer);
            service_->TakeAtoms();  // The observers keep what they need.
          })),
      log_sink_([this](int priority, std::string_view tag, std::string_view text) {
        state_.OnLogLine(priority, tag, text);
      }),
      lookup_observer_([this](simulated::LookupStep step) { state_.OnLookup(step); }) {}

Replay::~Replay() {
  DestroyEngine();
  simulated::ResetServices();
}

void Replay::Run(const EventSource& next) {
  for (std::size_t turn = 0; next(events_.at(turn)); turn = 1 - turn) {
    const Event& event = events_.at(turn);
    DeliverTrains(event.at);
    time_.RunTo(event.at);
    state_.SetCause({event.at, event.kind, event.line()});
    trains_.ForgetEnded();
    event.action(*this);
    time_.WaitUntilSettled();
  }
  DeliverTrains(simulated::VirtualTime::Instant::max());
  DestroyEngine();
  state_.OnRunEnd();
}

void Replay::StartEngine(SupplierKind supplier) {
  // The engine looks the service up at its start only if it is declared.
  state_.OnEngineStart(supplier != SupplierKind::kNone, AServiceManager_isDeclared(kStatsInstance));
  engine_ = testkit::MakeEngine(
      supplier, [this](testkit::DiagnosticsItem asked) { return state_.OnAsk(asked); });
}

void Replay::DeliverTrains(simulated::VirtualTime::Instant until) {
  while (trains_.HasSampleBy(until)) {
    const SampleTrains::Sample sample = trains_.TakeNext();
    time_.RunTo(sample.arrival);  // Settles first, so each sample is complete before the next.
    state_.OnSample({time_.Now(), "samples", sample.line}, sample.sensor);
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
  state_.OnSample(state_.cause(), sensor);
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
void Replay::RegisterService() { simulated::RegisterService(kStatsInstance, service_); }
void Replay::UnregisterService() { simulated::UnregisterService(kStatsInstance); }
void Replay::RefuseService() { simulated::RefuseService(kStatsInstance); }
void Replay::AllowService() { simulated::AllowService(kStatsInstance); }
void Replay::ReleaseServiceWaits() { simulated::ReleaseServiceWaits(kStatsInstance); }

void Replay::AnswerNext(std::int32_t reports, Answer answer) {
  service_->AnswerNext(reports, answer);
}

void Replay::Suspend(std::chrono::nanoseconds duration) {
  state_.OnSuspended(duration);
  time_.Suspend(duration);
}

void Replay::Note(std::string_view text) { state_.OnNote(text); }

}  // namespace sensorvela::replay
