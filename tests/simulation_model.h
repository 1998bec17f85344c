// What the library must do, once more and as plainly as possible: one thread, no locks, every
// effect at once. The simulation holds the real engine against it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include "tests/test_support.h"

namespace sensorvela::testing {

enum class Answer { kOk, kError, kNoStatus };

/// One engine and its stats service. `seen` is all that the world sees of them, in order: each log
/// line, and each atom that reaches the service, as `Show` writes it.
class Model {
 public:
  std::vector<std::string> seen;

  bool has_engine() const { return reporter_ != Reporter::kNone; }
  /// The reporter thread waits in the service manager.
  bool is_blocked() const {
    return reporter_ == Reporter::kBlockedAtStart || reporter_ == Reporter::kBlockedInDrain;
  }
  std::int64_t now_ns() const { return now_ns_; }

  // The world around the engine.
  void RunTo(std::int64_t instant_ns);
  void SlipTo(std::int64_t instant_ns) { now_ns_ = instant_ns; }
  void Declare() { declared_ = true; }
  void Undeclare();
  void Register();
  void Unregister() { registered_ = false; }
  void ReleaseWaits();
  void AnswerNext(int reports, Answer answer) {
    answers_.assign(static_cast<std::size_t>(reports), answer);
  }
  void SetDiagnostics(const Diagnostics& diagnostics) { diagnostics_ = diagnostics; }

  // The engine's life. `comes_up`: the service that a blocked destruction waits for registers, or
  // else the wait is released with none.
  void Create(Generation generation);
  void Destroy(bool comes_up);

  // Its events, by the engine's own names.
  void ReportVendorAtomAsync(const VendorAtom& atom) { Enqueue(Show(atom)); }
  void LogSensorHalError(SensorVela::SensorId sensor, SensorVela::HalCall call, int error) {
    CountError(true, sensor, static_cast<int>(call), error);
  }
  void LogSensorRuntimeError(SensorVela::SensorId sensor, SensorVela::ErrorType type, int code) {
    CountError(false, sensor, static_cast<int>(type), code);
  }
  void ReportHalSensorEnabled(SensorVela::SensorId sensor, std::int64_t period_ns);
  void ReportHalSensorDisabled(SensorVela::SensorId sensor);
  void LogSensorLatency(SensorVela::SensorId sensor, std::int64_t timestamp_ns);
  void ReportFirstSample(SensorVela::SensorId sensor, std::int64_t latency_ns);
  void LogSensorProxEvent(const SensorVela::TarnVelaProxEvent& event);
  void ReportHalLatency(SensorVela::HalOperation operation, SensorVela::SensorId sensor,
                        std::int64_t latency_ns);
  void ReportFirmwareState(int subject, SensorVela::FirmwareState state, int detail);

  /// The latest timestamp with which a sample of the sensor would not be late.
  std::int64_t LastInTime(SensorVela::SensorId sensor);

 private:
  enum class Reporter { kNone, kBlockedAtStart, kBlockedInDrain, kAsleep };

  struct Status {
    std::uint32_t bands[5] = {};
    std::uint32_t samples = 0;
    std::uint32_t late = 0;
    std::int64_t threshold_ns = 0;
    std::int64_t enabled_ns = 0;
    std::int64_t last_ns = 0;
  };

  void Log(char priority, const std::string& text) {
    seen.push_back(std::string{priority} + " " + text);
  }
  void CountError(bool hal, SensorVela::SensorId sensor, int enumerator, int code);
  void Enqueue(const std::string& atom);
  void WakeUp();
  void Pump();
  bool GoesOn();
  void ServiceAnswered(bool found);
  void Deliver(bool found);
  void EndCycle();
  void Upload();

  std::int64_t now_ns_ = 0;
  bool declared_ = false;
  bool registered_ = false;
  std::vector<Answer> answers_;  // The last one is given first.
  Diagnostics diagnostics_;
  Generation generation_ = Generation::kNone;

  Reporter reporter_ = Reporter::kNone;
  bool stopping_ = false;
  std::int64_t deadline_ns_ = 0;
  std::vector<std::string> queue_;
  std::vector<std::string> batch_;
  std::map<std::pair<bool, std::int32_t>, int> errors_;
  std::map<std::pair<std::uint32_t, std::int32_t>, Status> status_;
};

}  // namespace sensorvela::testing
