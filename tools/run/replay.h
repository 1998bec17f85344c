// One run of a trace: an engine on the simulated platform in virtual time, and the stats service
// that it reports to.
#pragma once

#include <cstdint>
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
#include "tools/run/run_observer.h"
#include "tools/run/run_state.h"
#include "tools/run/sample_trains.h"

namespace sensorvela::replay {

/// Owns the process's virtual time, log and services while it exists, so there can be one at a
/// time. To be used from one thread; what the reporter thread comes to is in `RunState`.
///
/// Each observer gets everything in the order in which it happened, and the same events give the
/// same calls.
class Replay {
 public:
  /// The observers outlive the replay, and are called one after the other. They get the engine's
  /// log lines only with `observe_log`.
  Replay(std::vector<RunObserver*> observers, bool observe_log);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  /// Lives through `events`, whose trace's text is still there, and the trains that they start,
  /// destroys the engine and ends the run. Once per replay.
  ///
  /// What a train delivers at or before an instant happens before an event of that instant. Of
  /// trains that share an instant, the one that began first comes first.
  void Run(const std::vector<Event>& events);

  // What an event can do. Called by the events' actions, while the engine is settled.

  void StartEngine(testkit::SupplierKind supplier);

  /// Calls the engine and waits until it is settled again.
  template <typename Call>
  void CallEngine(const Call& call) {
    call(*engine_);
    time_.WaitUntilSettled();
  }

  /// Calls the engine `count` times with an error, for which it queues an atom if the cap allows.
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

  /// The train's first sample bears the timestamp of this instant.
  void StartTrain(const SampleTrain& train);
  void CutTrains();

  /// What the supplier answers at the cycle ends from now on.
  void SetDiagnostics(const testkit::Diagnostics& diagnostics);

  void DeclareService();
  void UndeclareService();
  void RegisterService();
  void UnregisterService();
  void ReleaseServiceWaits();

  /// The service answers the next `reports` reports with `answer`, after those planned before.
  void AnswerNext(std::int32_t reports, Answer answer);

  void Note(std::string_view text);

 private:
  /// Lives through everything that the trains deliver up to that instant.
  void DeliverTrains(simulated::VirtualTime::Instant until);

  void DestroyEngine();

  simulated::VirtualTime time_;
  RunState state_;
  SampleTrains trains_;
  const std::shared_ptr<testkit::StatsService> service_;
  simulated::ScopedLogSink log_sink_;
  simulated::ScopedLookupObserver lookup_observer_;
  std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::replay
