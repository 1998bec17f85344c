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
  /// Whether the reporter thread waits in the service manager.
  bool is_blocked() const {
    return reporter_ == Reporter::kBlockedAtStart || reporter_ == Reporter::kBlockedInDrain;
  }
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
  void Refuse();
  void Allow() { refused_ = false; }
  void Register();
  void Unregister() { registered_ = false; }
  void ReleaseWaits();
  void AnswerNext(int reports, testkit::Answer answer) {
    answers_.insert(answers_.end(), static_cast<std::size_t>(reports), answer);
  }
  void SetDiagnostics(const testkit::Diagnostics& diagnostics) { diagnostics_ = diagnostics; }

  // Construction and destruction of the engine. If the destruction is blocked by a wait for the
  // service, the service registers (`comes_up`) or the wait is released without a service.
  void Create(SupplierKind supplier);
  void Destroy(bool comes_up);

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
  enum class Reporter { kNone, kBlockedAtStart, kBlockedInDrain, kAsleep };

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
  bool IsFound() const { return registered_ && !refused_; }
  bool IsAwaited() const { return !registered_ && !refused_; }
  void CountError(bool hal, SensorVela::SensorId sensor, int enumerator, int code);
  void WakeUp();
  void Pump();
  bool GoesOn();
  void ServiceAnswered(bool found);
  void Deliver(bool found);
  void EndCycle();
  void Upload();
  void UploadMemory(const SensorVela::MemoryPressure& memory);

  std::int64_t now_ns_ = 0;
  /// Of elapsed realtime; the monotonic clock does not have it.
  std::int64_t suspended_ns_ = 0;
  bool declared_ = true;
  bool registered_ = true;
  bool refused_ = false;
  std::deque<testkit::Answer> answers_;
  testkit::Diagnostics diagnostics_;
  SupplierKind supplier_ = SupplierKind::kNone;

  Reporter reporter_ = Reporter::kNone;
  bool stopping_ = false;
  std::int64_t deadline_ns_ = 0;  // Of the monotonic clock.
  std::vector<VendorAtom> queue_;
  std::vector<VendorAtom> batch_;
  std::map<std::pair<bool, std::int32_t>, int> errors_;
  std::map<std::pair<std::uint32_t, std::int32_t>, Status> status_;
};

}  // namespace sensorvela::testing
