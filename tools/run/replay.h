// One run of a trace: an engine on the simulated platform in virtual time, and the stats service
// that it reports to.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/run/event.h"
#include "tools/run/recording_plan.h"
#include "tools/run/run_observer.h"
#include "tools/run/run_state.h"
#include "tools/run/sample_trains.h"
#include "trace_format/sample.h"

namespace sensorvela::replay {

/// Controls the process's virtual time, log and services while it exists, so only one may exist at
/// a time. Use it from one thread; `RunState` holds what it shares with the reporter thread.
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
      const std::uint64_t notifications = time_.Notifications();
      call(*engine_);
      if (time_.Notifications() == notifications) state_.OnErrorBlocked();
      time_.WaitUntilSettled();
    }
  }

  void EnableSensor(SensorVela::SensorId sensor, std::int64_t period_ns);
  void DisableSensor(SensorVela::SensorId sensor);
  void DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns);

  /// The timestamp of the train's first sample is the present instant.
  void StartTrain(const SampleTrain& train);
  void CutTrains();

  /// What the supplier returns at the ends of cycles from now on.
  void SetDiagnostics(const testkit::Diagnostics& diagnostics);

  void DeclareService();
  void UndeclareService();
  void RegisterService();
  void UnregisterService();
  void RefuseService();
  void AllowService();
  void ReleaseServiceWaits();

  /// Plans `answer` for the next `reports` reports that have no planned answer yet.
  void AnswerNext(std::int32_t reports, Answer answer);

  /// Samples of trains that would arrive meanwhile arrive when the device wakes up.
  void Suspend(std::chrono::nanoseconds duration);

  void Note(std::string_view text);

  // The operations of a recording's events. The recorded engine's lookups, reports, cycles and
  // answers happen where the recording has them, whatever the clocks say: the monotonic clock
  // stands still but for the ends of cycles.

  /// The recording's first event. `plan` must outlive the replay.
  void FollowRecording(const RecordingPlan& plan);
  /// In the order of their arrival.
  void DeliverSamples(const std::vector<trace_format::Sample>& samples);
  void EndCycle();
  void AnswerSupplier(const testkit::Diagnostics& answer);
  /// Something happens while the recorded engine's lookup waits.
  void LookupWaits();
  void EndLookup(bool found);

 private:
  /// Notifies the observers if the host can find the service now and could not before, or the other
  /// way round.
  void ChangeService(bool is_registered, bool is_refused);

  /// Elapsed realtime goes on to `instant`; every engine is settled before it does.
  void MoveTo(simulated::VirtualTime::Instant instant);

  /// The reports that the recorded engine had made when its next lookup began.
  std::int64_t ReportsBeforeNextLookup() const;
  /// All atoms that are queued are dropped.
  void DropQueuedAtoms();

  /// Delivers all samples of the trains that arrive by `until`.
  void DeliverTrains(simulated::VirtualTime::Instant until, const std::function<bool()>& is_over);

  void DestroyEngine();

  simulated::VirtualTime time_;
  /// The present event, whose line the state's cause refers to, and the next one, in turns.
  std::array<Event, 2> events_;
  RunState state_;
  SampleTrains trains_;
  const std::shared_ptr<testkit::StatsService> service_;
  simulated::ScopedLogSink log_sink_;
  simulated::ScopedLookupObserver lookup_observer_;
  std::unique_ptr<SensorVela> engine_;
  bool is_registered_ = false;
  bool is_refused_ = false;

  /// Null if the run follows no recording.
  const RecordingPlan* recording_ = nullptr;
  /// The lookups of the recording that have ended.
  std::size_t lookups_ended_ = 0;
  /// Something has happened while the present lookup waits.
  bool lookup_waits_ = false;
  /// The present lookup's atoms have been dropped already.
  bool dropped_early_ = false;
};

}  // namespace sensorvela::replay
