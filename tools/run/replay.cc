#include "tools/run/replay.h"

#include <aidl/android/frameworks/stats/BnStats.h>
#include <android/binder_manager.h>
#include <android/binder_status.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/testkit/destroy_engine.h>

namespace sensorvela::tools {

using testkit::kStatsInstance;
using testkit::SupplierKind;

namespace {

/// What the process of the service does with an atom.
class TakingService : public aidl::android::frameworks::stats::BnStats {
 public:
  explicit TakingService(Facts& facts) : facts_(facts) {}

  ndk::ScopedAStatus reportVendorAtom(const SensorVela::VendorAtom& /*atom*/) override {
    facts_.TakenFromBuffer();
    return ndk::ScopedAStatus::ok();
  }

 private:
  Facts& facts_;
};

}  // namespace

Replay::Replay(std::vector<RunObserver*> observers, bool observe_log)
    : facts_(std::move(observers), observe_log, time_),
      service_(ndk::SharedRefBase::make<testkit::StatsService>(
          [this](const SensorVela::VendorAtom& atom, testkit::Answer answer) {
            TakeReport(atom, answer);
            service_->TakeAtoms();  // The observers keep what they need.
          })),
      log_sink_([this](int priority, std::string_view tag, std::string_view text) {
        facts_.LogLine(priority, tag, text);
      }),
      lookup_observer_([this](simulated::LookupStep step) { facts_.Lookup(step); }) {
  time_.ObserveNotifications([this] { facts_.Notified(); });
}

Replay::~Replay() {
  // After a run that has failed, perhaps for want of a thread, this needs none.
  if (engine_ != nullptr) {
    StopEngine();
    simulated::FailServiceManager(kStatsInstance);
    if (process_ != nullptr) process_->Die();
    engine_.reset();
  }
  simulated::ResetServices();
}

void Replay::Run(const EventSource& next, const std::function<bool()>& is_over) {
  while (next(event_)) {
    DeliverTrains(event_.at, is_over);
    if (is_over()) return;
    MoveTo(event_.at);
    facts_.EventBegins(event_.info);
    event_.action(*this);
    time_.WaitUntilSettled();
    LookForDivergence();
  }
  DeliverTrains(simulated::VirtualTime::Instant::max(), is_over);
  if (is_over()) return;
  if (engine_ != nullptr) {
    StopEngine();
    LookForDivergence();
    time_.WaitUntilSettled();  // What the recording had held back goes on to its next wait.
    testkit::DestroyEngine(time_, [this] { engine_.reset(); }, [this] { ReleaseLookups(); });
  }
  facts_.RunEnds();
}

void Replay::StartEngine(SupplierKind supplier) {
  // The engine looks the service up at its start only if it is declared.
  facts_.EngineStarts(supplier != SupplierKind::kNone, AServiceManager_isDeclared(kStatsInstance));
  engine_ = testkit::MakeEngine(supplier,
                                [this](testkit::DiagnosticsItem asked) { return AnswerOf(asked); });
}

void Replay::EnableSensor(SensorVela::SensorId sensor, std::int64_t period_ns) {
  facts_.SensorEnabled(sensor, period_ns);
  engine_->ReportHalSensorEnabled(sensor, period_ns);
}

void Replay::DisableSensor(SensorVela::SensorId sensor) {
  facts_.SensorDisabled(sensor);
  engine_->ReportHalSensorDisabled(sensor);
}

void Replay::ReportFirstSample(SensorVela::SensorId sensor, std::int64_t latency_ns) {
  facts_.FirstSampleReported(sensor);
  engine_->ReportFirstSample(sensor, latency_ns);
}

void Replay::DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns) {
  facts_.Sample(event_.info, sensor, timestamp_ns);
  engine_->LogSensorLatency(sensor, timestamp_ns);
}

void Replay::DeliverSamples(const std::vector<trace_format::Sample>& samples) {
  for (const trace_format::Sample& sample : samples) {
    MoveTo(std::chrono::nanoseconds(sample.arrival_ns));
    DeliverSample(sample.sensor, sample.timestamp_ns);
  }
}

void Replay::DeliverTrains(simulated::VirtualTime::Instant until,
                           const std::function<bool()>& is_over) {
  while (const SampleTrains::Running* const next = trains_.NextBy(until)) {
    if (is_over()) break;
    MoveTo(next->Arrival());  // Settles first, so each sample is complete before the next.
    facts_.Sample(next->event, next->train.sensor, next->timestamp_ns);
    engine_->LogSensorLatency(next->train.sensor, next->timestamp_ns);
    trains_.Advance();
  }
  time_.WaitUntilSettled();
}

void Replay::StartTrain(const SampleTrain& train) {
  trains_.Start(train, time_.Now(), event_.info);
}

void Replay::RegisterService(std::optional<std::chrono::nanoseconds> time_per_atom) {
  if (time_per_atom) {
    KillProcess();
    time_.WaitUntilSettled();
  }
  is_registered_ = true;
  is_process_ = time_per_atom.has_value();
  TellOfService();
  if (!time_per_atom) {
    simulated::RegisterService(kStatsInstance, service_);
    return;
  }
  facts_.ProcessStarts();
  process_ = std::make_shared<simulated::ServiceProcess>(
      ndk::SharedRefBase::make<TakingService>(facts_),
      simulated::ProcessObserver{
          .on_report = [this](const SensorVela::VendorAtom& atom,
                              binder_status_t status) { ToProcess(atom, status); },
          .on_lost = [this](const SensorVela::VendorAtom&) { facts_.LostInBuffer(); }});
  process_->SetTimePerAtom(*time_per_atom);
  simulated::RegisterService(kStatsInstance, process_);
}

void Replay::KillProcess() {
  if (process_ == nullptr) return;
  if (is_process_) {
    is_registered_ = false;
    TellOfService();
  }
  process_->Die();
}

void Replay::UnregisterService() {
  is_registered_ = false;
  is_process_ = false;
  TellOfService();
  simulated::UnregisterService(kStatsInstance);
}

void Replay::RefuseService() {
  is_refused_ = true;
  TellOfService();
  simulated::RefuseService(kStatsInstance);
}

void Replay::AllowService() {
  is_refused_ = false;
  TellOfService();
  simulated::AllowService(kStatsInstance);
}

void Replay::Suspend(std::chrono::nanoseconds duration) {
  facts_.Suspended(duration);
  time_.Suspend(duration);
}

void Replay::FollowRecording(const RecordingPlan& plan) {
  recording_ = std::make_unique<RecordingFollower>(plan, time_, facts_, service_);
}

void Replay::TakeReport(const SensorVela::VendorAtom& atom, testkit::Answer answer) {
  if (recording_ != nullptr && !recording_->AwaitReport()) return;
  facts_.Reported(atom, answer);
  if (recording_ != nullptr) recording_->ReportEnds();
}

void Replay::ToProcess(const SensorVela::VendorAtom& atom, binder_status_t status) {
  if (status == STATUS_OK) {
    facts_.HandedOver(atom);
  } else {
    facts_.NotHandedOver(atom, status == STATUS_FAILED_TRANSACTION);
  }
}

testkit::Diagnostics Replay::AnswerOf(testkit::DiagnosticsItem asked) {
  const bool is_first = asked == testkit::DiagnosticsItem::kProcessor;
  if (is_first) facts_.CycleEnds();
  if (recording_ == nullptr) return diagnostics_;
  if (is_first) recording_->CycleEnds();
  return recording_->AwaitAnswer();
}

void Replay::TellOfService() {
  std::optional<AbsenceReason> absence;
  if (!is_registered_) absence = AbsenceReason::kNotRegistered;
  if (is_refused_) absence = AbsenceReason::kRefused;
  facts_.ServiceChanges(absence);
}

void Replay::MoveTo(simulated::VirtualTime::Instant instant) {
  if (recording_ == nullptr) {
    time_.RunTo(instant);
  } else {
    time_.Suspend(instant - time_.Now());
  }
}

void Replay::StopEngine() {
  facts_.EngineStops(recording_ != nullptr, has_end_);
  if (recording_ != nullptr) recording_->Stop();
}

void Replay::ReleaseLookups() {
  simulated::ReleaseServiceWaits(kStatsInstance);
  // It need not be registered any more.
  if (process_ != nullptr) process_->ReleaseLookups();
}

void Replay::LookForDivergence() {
  if (recording_ == nullptr || divergence_ || recording_->divergence().empty()) return;
  divergence_ = {event_.info->line, recording_->divergence()};
}

}  // namespace sensorvela::tools
