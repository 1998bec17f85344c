#include "tools/replay.h"

#include <android/log.h>

#include <thread>
#include <utility>

#include "tools/diagnostics_suppliers.h"

namespace sensorvela::replay {

using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;

class Replay::Service : public IStats {
 public:
  explicit Service(Replay& replay) : replay_(replay) {}

  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    switch (replay_.OnReport(atom)) {
      case Answer::kOk:
        return ndk::ScopedAStatus::ok();
      case Answer::kError:
        return ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
      case Answer::kNoStatus:
        break;
    }
    return ndk::ScopedAStatus(nullptr);
  }

 private:
  Replay& replay_;
};

Replay::Replay(std::vector<Report*> reports, bool report_log)
    : stats_instance_(std::string(IStats::descriptor) + "/default"),
      report_log_(report_log),
      reports_(std::move(reports)),
      log_sink_([this](int priority, std::string_view tag, std::string_view text) {
        OnLogLine(priority, tag, text);
      }),
      lookup_observer_([this](simulated::LookupStep step) { OnLookup(step); }) {}

Replay::~Replay() {
  DestroyEngine();
  simulated::ResetServices();
}

void Replay::Run(const std::vector<Event>& events) {
  for (const Event& event : events) {
    DeliverTrains(event.at);
    time_.RunTo(event.at);
    {
      const std::lock_guard lock(mutex_);
      SetCause({event.at, event.kind, event.line});
    }
    event.action(*this);
    time_.WaitUntilSettled();
  }
  DeliverTrains(simulated::VirtualTime::Instant::max());
  DestroyEngine();
  summary_.dropped = queued_ - summary_.delivered - summary_.failed;
  summary_.sensors = sensor_tally_.Summaries();
  Tell(&Report::Finish, time_.Now(), summary_);
}

void Replay::StartEngine(SupplierKind supplier) {
  {
    // Only a declared service is looked up at the start.
    const std::lock_guard lock(mutex_);
    is_starting_ = is_service_declared_;
  }
  const auto on_cycle_end = [this] { return OnCycleEnd(); };
  switch (supplier) {
    case SupplierKind::kNone:
      engine_ =
          std::make_unique<SensorVela>(std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2>());
      break;
    case SupplierKind::kFirstGeneration:
      summary_.cycles_ended = 0;
      engine_ = std::make_unique<SensorVela>(MakeFirstGenerationSupplier(on_cycle_end));
      break;
    case SupplierKind::kSecondGeneration:
      summary_.cycles_ended = 0;
      engine_ = std::make_unique<SensorVela>(MakeSecondGenerationSupplier(on_cycle_end));
      break;
  }
}

void Replay::DeliverTrains(simulated::VirtualTime::Instant until) {
  while (trains_.HasSampleBy(until)) {
    const SampleTrains::Sample sample = trains_.TakeNext();
    time_.RunTo(sample.arrival);  // Begins settled, so that each sample is done before the next.
    DeliverSample(sample.sensor, sample.timestamp_ns, {sample.arrival, "samples", sample.line});
  }
  time_.WaitUntilSettled();
}

void Replay::EnableSensor(SensorVela::SensorId sensor, std::int64_t period_ns) {
  {
    const std::lock_guard lock(mutex_);
    Tell(&Report::SensorEnabled, time_.Now(), sensor, period_ns);
  }
  engine_->ReportHalSensorEnabled(sensor, period_ns);
}

void Replay::DisableSensor(SensorVela::SensorId sensor) {
  {
    const std::lock_guard lock(mutex_);
    Tell(&Report::SensorDisabled, time_.Now(), sensor);
  }
  engine_->ReportHalSensorDisabled(sensor);
}

void Replay::DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns) {
  DeliverSample(sensor, timestamp_ns, cause_);
}

void Replay::DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns, Cause cause) {
  {
    const std::lock_guard lock(mutex_);
    SetCause(cause);
    sensor_tally_.CountSample(sensor);
    Tell(&Report::Sample, cause.at, sensor);
  }
  engine_->LogSensorLatency(sensor, timestamp_ns);
}

void Replay::StartTrain(const SampleTrain& train) {
  const std::lock_guard lock(mutex_);
  trains_.Start(train, time_.Now(), cause_.line);
}

void Replay::CutTrains() { trains_.Cut(); }

void Replay::SetDiagnostics(const Diagnostics& diagnostics) {
  const std::lock_guard lock(mutex_);
  diagnostics_ = diagnostics;
}

void Replay::DestroyEngine() {
  if (engine_ == nullptr) return;
  {
    const std::lock_guard lock(mutex_);
    TellQueued();
    is_stopping_ = true;
  }
  // The destructor waits for the reporter thread, which may wait for the service: that wait must be
  // released once the stop has been requested and not before, or it would begin anew.
  const std::uint64_t stop_requested = time_.Notifications() + 1;
  std::thread destroyer([this] { engine_.reset(); });
  time_.WaitForNotifications(stop_requested);
  ReleaseServiceWaits();
  destroyer.join();
}

void Replay::SetCause(const Cause& cause) {
  TellQueued();
  cause_ = cause;
}

void Replay::TellQueued() {
  if (is_stopping_) return;  // The destruction notifies, too, and queues nothing.
  for (const std::uint64_t queued = time_.Notifications(); queued_ < queued; ++queued_) {
    Tell(&Report::AtomQueued, cause_);
  }
}

void Replay::DeclareService() {
  is_service_declared_ = true;
  simulated::DeclareService(stats_instance_);
}

void Replay::UndeclareService() {
  is_service_declared_ = false;
  simulated::UndeclareService(stats_instance_);
}

void Replay::RegisterService() {
  simulated::RegisterService(stats_instance_, std::make_shared<Service>(*this));
}

void Replay::UnregisterService() { simulated::UnregisterService(stats_instance_); }

void Replay::ReleaseServiceWaits() { simulated::ReleaseServiceWaits(stats_instance_); }

void Replay::AnswerNext(std::int32_t reports, Answer answer) {
  const std::lock_guard lock(mutex_);
  planned_answers_.push_back({reports, answer});
}

void Replay::Note(std::string_view text) {
  const std::lock_guard lock(mutex_);
  Tell(&Report::Note, time_.Now(), text);
}

void Replay::OnLogLine(int priority, std::string_view tag, std::string_view text) {
  const std::lock_guard lock(mutex_);
  const bool blocked = priority == ANDROID_LOG_ERROR &&
                       text.find("upload blocked due to cap") != std::string_view::npos;
  if (blocked) {
    ++summary_.blocked_by_cap;
    Tell(&Report::BlockedByCap, time_.Now(), cause_, text);
  }
  if (report_log_) Tell(&Report::LogLine, time_.Now(), priority, tag, text);
}

void Replay::OnLookup(simulated::LookupStep step) {
  using simulated::LookupStep;
  const std::lock_guard lock(mutex_);
  TellQueued();
  if (step == LookupStep::kWaits) {
    Tell(&Report::Reporter, time_.Now(), ReporterStep::kWaits);
  } else if (std::exchange(is_starting_, false)) {
    Tell(&Report::Reporter, time_.Now(), ReporterStep::kStarts);
  } else {
    Tell(&Report::Reporter, time_.Now(),
         step == LookupStep::kFinds ? ReporterStep::kSends : ReporterStep::kDrops);
  }
}

Answer Replay::OnReport(const VendorAtom& atom) {
  const std::lock_guard lock(mutex_);
  const Answer answer = TakeAnswer();
  ++(answer == Answer::kOk ? summary_.delivered : summary_.failed);
  sensor_tally_.CountAtom(atom, answer == Answer::kOk);
  Tell(&Report::Atom, time_.Now(), atom, answer);
  return answer;
}

Diagnostics Replay::OnCycleEnd() {
  const std::lock_guard lock(mutex_);
  TellQueued();
  cause_ = {time_.Now(), "end of a cycle", {}};
  summary_.cycles_ended = summary_.cycles_ended.value_or(0) + 1;
  Tell(&Report::Reporter, time_.Now(), ReporterStep::kUploads);
  return diagnostics_;
}

Answer Replay::TakeAnswer() {
  if (planned_answers_.empty()) return Answer::kOk;
  const Answer answer = planned_answers_.front().answer;
  if (--planned_answers_.front().reports == 0) planned_answers_.pop_front();
  return answer;
}

}  // namespace sensorvela::replay
