// A second, simpler implementation of what the library must do: one thread, no locks, every effect
// at once. The simulation compares the real engine with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

#include "tests/library/test_support.h"

namespace sensorvela::testing {

/// One engine and its stats service. `history` has all their visible effects, as
/// `World::TakeHistory` writes them.
class Model {
 public:
  std::vector<std::string> history;

  bool has_engine() const { return reporter_ != Reporter::kNone; }
  /// Whether the reporter thread waits in the service manager or for the service's process.
  bool is_blocked() const {
    return reporter_ == Reporter::kBlockedAtStart || reporter_ == Reporter::kBlockedInDrain;
  }
  /// Whether a thread that is blocked waits for the process.
  bool awaits_process() const { return awaits_process_; }
  std::int64_t now_ns() const { return now_ns_; }

  // The world around the engine.
  void RunTo(std::int64_t instant_ns);
  void SlipTo(std::int64_t instant_ns) { now_ns_ = instant_ns; }
  void Suspend(std::int64_t duration_ns) {
    now_ns_ += duration_ns;
    suspended_ns_ += duration_ns;
  }
  void Declare() { declared_ = true; }
  void Undeclare() { declared_ = false; }
  void Refuse() { refused_ = true; }
  void Allow() { refused_ = false; }
  void Register();
  void Unregister() { registered_ = Where::kNowhere; }
  void ReleaseWaits();

  // The service's process.
  void RegisterProcess();
  void SetTimePerAtom(std::int64_t duration_ns) { time_per_atom_ns_ = duration_ns; }
  void Stop();
  void GoOn();
  void Die();
  /// The longest text whose atom fits into the process's buffer after all that are queued; 0 for
  /// none.
  std::int64_t LongestText() const;
  bool process_is_stopped() const { return process_.alive && process_.stopped && !process_.busy; }
  void AnswerNext(int reports, testkit::Answer answer) {
    answers_.insert(answers_.end(), static_cast<std::size_t>(reports), answer);
  }
  void SetDiagnostics(const testkit::Diagnostics& diagnostics) { diagnostics_ = diagnostics; }

  // Construction and destruction of the engine. `release` ends the wait that blocks the
  // destruction, if one does.
  void Create(SupplierKind supplier);
  void Destroy(void (Model::*release)());

  /// What a method does that only queues this atom.
  void Enqueue(const VendorAtom& atom);

  // The other event methods, with the names that they have in `SensorVela`.
  void LogSensorHalError(SensorVela::SensorId sensor, SensorVela::HalCall call, int error) {
    CountError(true, sensor, static_cast<int>(call), error);
  }
  void LogSensorRuntimeError(SensorVela::SensorId sensor, SensorVela::ErrorType type, int code) {
    CountError(false, sensor, static_cast<int>(type), code);
  }
  void ReportHalSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns);
  void ReportHalSensorDisabled(SensorVela::SensorId sensor);
  void LogSensorLatency(SensorVela::SensorId sensor, std::int64_t timestamp_ns);

  /// The latest timestamp at which a sample of the sensor would not be late.
  std::int64_t LastInTime(SensorVela::SensorId sensor);

 private:
  enum class Where { kNowhere, kInHost, kInProcess };

  /// The process of the service. Its times are of the monotonic clock.
  struct Process {
    bool alive = false;
    bool stopped = false;
    /// It works on the first atom of the buffer.
    bool busy = false;
    std::int64_t done_ns = 0;
    std::int64_t left_ns = 0;
    std::deque<VendorAtom> buffer;
    std::int64_t bytes = 0;
  };

  enum class Reporter { kNone, kBlockedAtStart, kBlockedInDrain, kBusy, kAsleep };

  struct Status {
    std::array<std::uint32_t, 5> bands = {};
    std::uint32_t samples = 0;
    std::uint32_t late = 0;
    std::int64_t threshold_ns = 0;
    std::int64_t enabled_ns = 0;
    std::int64_t last_ns = 0;
  };

  void Log(char priority, const std::string& text) {
    history.push_back(std::string{priority} + " " + text);
  }
  std::int64_t monotonic_ns() const { return now_ns_ - suspended_ns_; }
  void CountError(bool hal, SensorVela::SensorId sensor, int enumerator, int code);
  void WakeUp();
  void Pump();
  bool GoesOn();
  void LookUp();
  /// The lookup ends, and what follows until the thread sleeps or is blocked again.
  void LookupEnds(bool found);
  void ReportToHost(const VendorAtom& atom);
  void ReportToProcess(const VendorAtom& atom);
  void LogFailure(const VendorAtom& atom);
  void ProcessWorks(std::int64_t since_ns);
  void ProcessIsDone();
  void Take(const VendorAtom& atom);
  /// A lookup that waits for the process ends.
  void ProcessAnswers(bool found);
  void EndCycle();
  void Upload();
  void UploadMemory(const SensorVela::MemoryPressure& memory);

  std::int64_t now_ns_ = 0;
  /// Of elapsed realtime; the monotonic clock does not have it.
  std::int64_t suspended_ns_ = 0;
  bool declared_ = true;
  Where registered_ = Where::kInHost;
  bool refused_ = false;
  Process process_;
  std::int64_t time_per_atom_ns_ = 0;
  std::deque<testkit::Answer> answers_;
  testkit::Diagnostics diagnostics_;
  SupplierKind supplier_ = SupplierKind::kNone;

  Reporter reporter_ = Reporter::kNone;
  bool awaits_process_ = false;
  bool stopping_ = false;
  std::int64_t deadline_ns_ = 0;  // Of the monotonic clock.
  std::vector<VendorAtom> queue_;
  std::vector<VendorAtom> batch_;
  std::map<std::pair<bool, std::int32_t>, int> errors_;
  std::map<std::pair<std::uint32_t, std::int32_t>, Status> status_;
};

}  // namespace sensorvela::testing
