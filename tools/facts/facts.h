// Works out what a run means.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/stats_service.h>

#include "platform/sync.h"
#include "tools/facts/cause.h"
#include "tools/facts/findings.h"
#include "tools/facts/run_checks.h"
#include "tools/facts/run_observer.h"
#include "tools/facts/sensor_checks.h"
#include "tools/facts/sensor_facts.h"
#include "tools/text/sensor_order.h"

#include "platform/thread_annotations.h"

namespace sensorvela::tools {

/// Is told what happens in a run, and tells the observers what it means. The run's main thread and
/// the engine's reporter thread call it in the order of what happens. Every method takes the one
/// lock and calls the observers with it held.
class Facts {
 public:
  /// Constructed by the run's main thread. The observers and `time` must outlive it. The observers
  /// get log lines only with `observe_log`.
  Facts(std::vector<RunObserver*> observers, bool observe_log, const simulated::VirtualTime& time);

  // Called by the main thread.

  /// An event happens now: it is the cause of the atoms that the main thread queues from now on.
  void EventBegins(const std::shared_ptr<const EventInfo>& event) SENSORVELA_EXCLUDES(mutex_);

  /// `looks_up_first`: the first lookup is the one at the engine's start.
  void EngineStarts(bool has_supplier, bool looks_up_first) SENSORVELA_EXCLUDES(mutex_);
  /// The engine is about to be destroyed. In a run that `follows_recording`, what it still does is
  /// not what the recorded engine did, and is not looked at.
  /// `by_host`: the trace says so; otherwise the run ends before the host does it.
  void EngineStops(bool follows_recording, bool by_host) SENSORVELA_EXCLUDES(mutex_);
  void RunEnds() SENSORVELA_EXCLUDES(mutex_);

  // Called before the call of the engine.

  void SensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns)
      SENSORVELA_EXCLUDES(mutex_);
  void SensorDisabled(SensorVela::SensorId sensor) SENSORVELA_EXCLUDES(mutex_);
  /// The host reports a first sample beside the engine.
  void FirstSampleReported(SensorVela::SensorId sensor) SENSORVELA_EXCLUDES(mutex_);
  void Sample(const std::shared_ptr<const EventInfo>& event, SensorVela::SensorId sensor,
              std::int64_t timestamp_ns) SENSORVELA_EXCLUDES(mutex_);
  void ErrorBegins() SENSORVELA_EXCLUDES(mutex_);

  /// The call that reports an error has returned. It was blocked if it queued no atom.
  void ErrorEnds() SENSORVELA_EXCLUDES(mutex_);

  /// `absence`: why the host cannot find the service from now on; none if it can. Every run begins
  /// without the service.
  void ServiceChanges(std::optional<AbsenceReason> absence) SENSORVELA_EXCLUDES(mutex_);
  /// A process of the service's own has started.
  void ProcessStarts() SENSORVELA_EXCLUDES(mutex_);
  /// The process has died with its oldest atom in the buffer.
  void LostInBuffer() SENSORVELA_EXCLUDES(mutex_);
  /// The supplier of a recording has answered.
  void SupplierAnswers() SENSORVELA_EXCLUDES(mutex_);
  void Suspended(std::chrono::nanoseconds duration) SENSORVELA_EXCLUDES(mutex_);
  void Note(std::string_view text) SENSORVELA_EXCLUDES(mutex_);

  // Called by the reporter thread.

  void Lookup(simulated::LookupStep step) SENSORVELA_EXCLUDES(mutex_);
  void Reported(const SensorVela::VendorAtom& atom, testkit::Answer answer)
      SENSORVELA_EXCLUDES(mutex_);
  /// The report of the oldest atom has put it into the buffer of the service's process.
  void HandedOver(const SensorVela::VendorAtom& atom) SENSORVELA_EXCLUDES(mutex_);
  /// The report of the oldest atom has failed: that did not fit, or the process is dead.
  void NotHandedOver(const SensorVela::VendorAtom& atom, bool did_not_fit)
      SENSORVELA_EXCLUDES(mutex_);
  /// The engine begins to ask its supplier.
  void CycleEnds() SENSORVELA_EXCLUDES(mutex_);

  // Called by either thread.

  /// The process has taken the oldest atom of its buffer.
  void TakenFromBuffer() SENSORVELA_EXCLUDES(mutex_);

  // Called by either thread, `Notified` also by the one that destroys the engine.

  /// The engine has queued an atom or, once it has been told to stop, has been notified of that.
  void Notified() SENSORVELA_EXCLUDES(mutex_);
  void LogLine(int priority, std::string_view tag, std::string_view text)
      SENSORVELA_EXCLUDES(mutex_);

 private:
  using Instant = RunObserver::Instant;

  /// The disable that an atom reports: the sensor, and how often it had been enabled by then.
  struct Disable {
    SensorVela::SensorId sensor;
    std::uint64_t enables;
  };

  struct QueuedAtom {
    Cause cause;
    std::optional<Disable> disable;
  };

  struct BufferedAtom {
    QueuedAtom queued;
    SensorVela::VendorAtom atom;
  };

  template <typename... Parameters, typename... Arguments>
  void Notify(void (RunObserver::*method)(Parameters...), const Arguments&... arguments)
      SENSORVELA_REQUIRES(mutex_) {
    for (RunObserver* observer : observers_) (observer->*method)(arguments...);
  }

  /// The oldest atom has reached the service.
  QueuedAtom TakeReported(const SensorVela::VendorAtom& atom, testkit::Answer answer)
      SENSORVELA_REQUIRES(mutex_);
  QueuedAtom RemoveOldest() SENSORVELA_REQUIRES(mutex_);
  /// The oldest atom leaves the buffer.
  void LeaveBuffer(BufferFate fate) SENSORVELA_REQUIRES(mutex_);
  /// The oldest atom never reaches it.
  void Drop(DropReason reason) SENSORVELA_REQUIRES(mutex_);
  /// Why the present lookup finds no service.
  DropReason ReasonAtLookup() const SENSORVELA_REQUIRES(mutex_);
  void TellOfAtom(const AtomFact& fact) SENSORVELA_REQUIRES(mutex_) {
    Notify(&RunObserver::OnAtom, time_.Now(), fact);
  }
  void ChangeReporterState(ReporterState state) SENSORVELA_REQUIRES(mutex_);
  /// `lasts`: the run ends.
  void EndOutage(bool lasts) SENSORVELA_REQUIRES(mutex_);
  void EndSpan(SensorVela::SensorId sensor, SensorFacts& facts) SENSORVELA_REQUIRES(mutex_);

  const std::vector<RunObserver*> observers_;
  const bool observe_log_;
  const simulated::VirtualTime& time_;
  const std::thread::id main_thread_ = std::this_thread::get_id();

  platform::Mutex mutex_;
  Summary summary_ SENSORVELA_GUARDED_BY(mutex_);
  /// Of what the main thread does.
  Cause cause_ SENSORVELA_GUARDED_BY(mutex_);

  /// The atoms in the queue, and those that the reporter thread has taken.
  std::deque<QueuedAtom> unsent_ SENSORVELA_GUARDED_BY(mutex_);
  /// The atoms in the buffer of the service's process.
  std::deque<BufferedAtom> buffered_ SENSORVELA_GUARDED_BY(mutex_);
  /// How many of the unsent atoms the reporter thread has taken.
  std::size_t batch_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// The disable that is reported next.
  std::optional<Disable> disable_ SENSORVELA_GUARDED_BY(mutex_);
  /// The call in progress reports an error and has queued no atom.
  bool error_is_blocked_ SENSORVELA_GUARDED_BY(mutex_) = false;
  std::string last_log_text_ SENSORVELA_GUARDED_BY(mutex_);
  bool is_stopping_ SENSORVELA_GUARDED_BY(mutex_) = false;
  bool is_beyond_recording_ SENSORVELA_GUARDED_BY(mutex_) = false;

  /// The next lookup is the one at the engine's start.
  bool is_starting_ SENSORVELA_GUARDED_BY(mutex_) = false;
  ReporterState reporter_ SENSORVELA_GUARDED_BY(mutex_) = ReporterState::kNotStarted;
  Instant reporter_since_ SENSORVELA_GUARDED_BY(mutex_) = {};
  /// The atoms that it holds while it waits.
  std::size_t held_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  Instant last_step_ SENSORVELA_GUARDED_BY(mutex_) = {};

  /// Why the host cannot find the service; none if it can.
  std::optional<AbsenceReason> absence_ SENSORVELA_GUARDED_BY(mutex_) =
      AbsenceReason::kNotRegistered;
  /// The present outage; none before the first event and while the service is there.
  std::optional<Outage> outage_ SENSORVELA_GUARDED_BY(mutex_);

  struct Sensor {
    SensorFacts facts;
    SensorChecks checks;
  };

  Sensor& SensorOf(SensorVela::SensorId id) SENSORVELA_REQUIRES(mutex_);
  /// Now, with the line of the cause.
  Moment MomentOf(const Cause& cause) const SENSORVELA_REQUIRES(mutex_) {
    return {time_.Now(), asleep_, cause.line()};
  }

  Findings findings_ SENSORVELA_GUARDED_BY(mutex_);
  RunChecks run_checks_ SENSORVELA_GUARDED_BY(mutex_){findings_};
  std::chrono::nanoseconds asleep_ SENSORVELA_GUARDED_BY(mutex_) = {};
  Instant engine_start_ SENSORVELA_GUARDED_BY(mutex_) = {};

  using Sensors = std::map<SensorVela::SensorId, Sensor, SensorOrder>;

  Sensors sensors_ SENSORVELA_GUARDED_BY(mutex_);
  /// The last ones that were looked up, by a hash: faster than the map for each sample.
  std::array<Sensors::value_type*, 64> recent_sensors_ SENSORVELA_GUARDED_BY(mutex_) = {};
};

}  // namespace sensorvela::tools

#include "platform/thread_annotations_end.h"
