// One run of a trace: an engine on the simulated platform in virtual time, and the stats service
// that it reports to.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/service_process.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/facts.h"
#include "tools/run/event.h"
#include "tools/run/recording_follower.h"
#include "tools/run/recording_plan.h"
#include "tools/run/sample_trains.h"
#include "trace_format/sample.h"

namespace sensorvela::tools {

/// Controls the process's virtual time, log and services while it exists, so only one may exist at
/// a time. Use it from one thread.
///
/// The observers' methods are called in the order of what happens. The same events always give the
/// same calls.
class Replay {
 public:
  /// The observers must outlive the replay; they are called in the order of the list. They get the
  /// engine's log lines only with `observe_log`.
  Replay(std::vector<RunObserver*> observers, bool observe_log);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  /// Where a run first differs from the recording that it follows.
  struct Divergence {
    /// The line of the event.
    std::size_t line;
    std::string what;
  };

  /// Runs the events that `next` gives and the sample trains that they start, destroys the engine
  /// and ends the run. Calls `next` while the engine is settled, and lets its exceptions pass: the
  /// run then has no end. May be called once per replay.
  ///
  /// Stops as soon as `is_over`, which it asks before each event and each sample of a train,
  /// returns true; the run then has no end.
  ///
  /// Samples that arrive at or before an instant are delivered before the events of that instant.
  /// When samples of several trains arrive together, the train that began first delivers first.
  void Run(const EventSource& next, const std::function<bool()>& is_over = [] { return false; });

  /// None if the run follows no recording, or does so exactly.
  const std::optional<Divergence>& divergence() const { return divergence_; }

  // The operations of events. The events' actions call them while the engine is settled.

  void StartEngine(testkit::SupplierKind supplier);

  /// Calls the engine and waits until it is settled again.
  template <typename Call>
  void CallEngine(const Call& call) {
    call(*engine_);
    time_.WaitUntilSettled();
  }

  /// Reports an error to the engine `count` times; the engine queues an atom for it if the cap
  /// allows.
  template <typename Call>
  void ReportErrors(std::int32_t count, const Call& call) {
    for (std::int32_t i = 0; i < count; ++i) {
      facts_.ErrorBegins();
      call(*engine_);
      facts_.ErrorEnds();
      time_.WaitUntilSettled();
    }
  }

  void EnableSensor(SensorVela::SensorId sensor, std::int64_t period_ns);
  void DisableSensor(SensorVela::SensorId sensor);
  void ReportFirstSample(SensorVela::SensorId sensor, std::int64_t latency_ns);
  void DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns);
  /// A recording's samples, in the order of their arrival.
  void DeliverSamples(const std::vector<trace_format::Sample>& samples);

  /// The timestamp of the train's first sample is the present instant.
  void StartTrain(const SampleTrain& train);
  /// The trace's last event: the host destroys the engine.
  void End() {
    trains_.Cut();
    has_end_ = true;
  }

  /// What the supplier returns at the ends of cycles from now on.
  void SetDiagnostics(const testkit::Diagnostics& diagnostics) { diagnostics_ = diagnostics; }

  /// With `time_per_atom`, the service has a process of its own, which takes that long for an atom.
  /// A process before dies then.
  void RegisterService(std::optional<std::chrono::nanoseconds> time_per_atom);
  void UnregisterService();
  void RefuseService();
  void AllowService();
  void KillProcess();
  /// Of the service. There must have been one.
  simulated::ServiceProcess& process() { return *process_; }

  /// Plans `answer` for the next `reports` reports that have no planned answer yet.
  void AnswerNext(std::int32_t reports, testkit::Answer answer) {
    service_->AnswerNext(reports, answer);
  }

  /// Samples of trains that would arrive meanwhile arrive when the device wakes up.
  void Suspend(std::chrono::nanoseconds duration);

  void Note(std::string_view text) { facts_.Note(text); }

  /// A recording's first event: from now on, its lookups, reports, cycles and answers happen where
  /// the recording has them, and the monotonic clock stands still but for the ends of cycles.
  /// `plan` must outlive the replay.
  void FollowRecording(const RecordingPlan& plan);
  /// Only after that.
  RecordingFollower& recording() { return *recording_; }

 private:
  void TakeReport(const SensorVela::VendorAtom& atom, testkit::Answer answer);
  /// A report to the service's process ends.
  void ToProcess(const SensorVela::VendorAtom& atom, std::int32_t status);
  testkit::Diagnostics AnswerOf(testkit::DiagnosticsItem asked);

  /// Tells why the host cannot find the service from now on, if it cannot.
  void TellOfService();

  /// Elapsed realtime goes on to `instant`; every engine is settled before it does.
  void MoveTo(simulated::VirtualTime::Instant instant);

  /// Delivers all samples of the trains that arrive by `until`.
  void DeliverTrains(simulated::VirtualTime::Instant until, const std::function<bool()>& is_over);

  void StopEngine();
  void ReleaseLookups();

  void LookForDivergence();

  simulated::VirtualTime time_;
  Facts facts_;
  /// The event that happens now.
  Event event_;
  SampleTrains trains_;
  testkit::Diagnostics diagnostics_;
  const std::shared_ptr<testkit::StatsService> service_;
  /// The latest one; null if there has been none.
  std::shared_ptr<simulated::ServiceProcess> process_;
  bool has_end_ = false;
  bool is_registered_ = false;
  /// What is registered is the process.
  bool is_process_ = false;
  bool is_refused_ = false;
  /// Null if the run follows no recording.
  std::unique_ptr<RecordingFollower> recording_;
  std::optional<Divergence> divergence_;
  simulated::ScopedLogSink log_sink_;
  simulated::ScopedLookupObserver lookup_observer_;
  std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::tools
