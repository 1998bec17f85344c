// One run of a trace: an engine on the simulated platform in virtual time, and the stats service
// that it reports to.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include "tools/diagnostics.h"
#include "tools/report.h"
#include "tools/sample_trains.h"
#include "tools/sensor_tally.h"
#include "tools/trace.h"

namespace sensorvela::replay {

/// Owns the process's virtual time, log and services while it exists, so there can be one at a
/// time.
///
/// Each report receives everything in the order in which it happened, and the same events give the
/// same reports.
class Replay {
 public:
  /// The reports outlive the replay, and are told one after the other. They get the engine's log
  /// lines only with `report_log`.
  Replay(std::vector<Report*> reports, bool report_log);
  ~Replay();
  Replay(const Replay&) = delete;
  Replay& operator=(const Replay&) = delete;

  /// Lives through `events`, whose trace's text is still there, and the trains that they start,
  /// destroys the engine and reports the summary. Once per replay.
  ///
  /// What a train delivers at or before an instant happens before an event of that instant. Of
  /// trains that share an instant, the one that began first comes first.
  void Run(const std::vector<Event>& events);

  // What an event can do. Called by the events' actions, while the engine is settled.

  void StartEngine(SupplierKind supplier);

  /// Calls the engine `count` times; it is settled again after each call.
  template <typename Call>
  void CallEngine(std::int32_t count, const Call& call) {
    for (std::int32_t i = 0; i < count; ++i) {
      call(*engine_);
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
  void SetDiagnostics(const Diagnostics& diagnostics);

  void DeclareService();
  void UndeclareService();
  void RegisterService();
  void UnregisterService();
  void ReleaseServiceWaits();

  /// The service answers the next `reports` reports with `answer`, after those planned before.
  void AnswerNext(std::int32_t reports, Answer answer);

  void Note(std::string_view text);

 private:
  class Service;
  struct PlannedAnswers {
    std::int32_t reports;
    Answer answer;
  };

  /// Lives through everything that the trains deliver up to that instant.
  void DeliverTrains(simulated::VirtualTime::Instant until);

  void DeliverSample(SensorVela::SensorId sensor, std::int64_t timestamp_ns, Cause cause);

  void DestroyEngine();

  /// What is queued from now on is of that cause.
  void SetCause(const Cause& cause);

  template <typename... Parameters, typename... Arguments>
  void Tell(void (Report::*what)(Parameters...), const Arguments&... arguments) {
    for (Report* report : reports_) (report->*what)(arguments...);
  }
  /// Tells of the atoms that have been queued since it was last called.
  void TellQueued();

  void OnLookup(simulated::LookupStep step);
  void OnLogLine(int priority, std::string_view tag, std::string_view text);
  Answer OnReport(const SensorVela::VendorAtom& atom);
  Diagnostics OnCycleEnd();
  Answer TakeAnswer();

  const std::string stats_instance_;
  const bool report_log_;

  std::mutex mutex_;  // Guards all up to the diagnostics; the reporter thread comes here, too.
  const std::vector<Report*> reports_;
  Summary summary_;
  Cause cause_ = {};
  std::uint64_t queued_ = 0;
  bool is_stopping_ = false;
  /// The next lookup is the one at the reporter thread's start.
  bool is_starting_ = false;
  std::deque<PlannedAnswers> planned_answers_;
  SensorTally sensor_tally_;
  Diagnostics diagnostics_;

  bool is_service_declared_ = false;
  SampleTrains trains_;

  simulated::VirtualTime time_;
  simulated::ScopedLogSink log_sink_;
  simulated::ScopedLookupObserver lookup_observer_;
  std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::replay
