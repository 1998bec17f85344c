// Takes the place of the library's exported methods. Each calls the library's.
#include <cstdint>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/next_definition.h"
#include "recorder/outside_atom.h"
#include "recorder/recordings.h"

using sensorvela::recorder::EventLine;
using sensorvela::recorder::NextDefinition;
using sensorvela::recorder::Recording;
using sensorvela::recorder::Recordings;
using sensorvela::recorder::ThisThread;

namespace {

/// The recording for a host's call of the engine; null if the call is not recorded: a call that the
/// engine makes of itself is not.
Recording* RecordingOf(const SensorVela* engine) {
  return ThisThread().is_in_engine ? nullptr : Recordings::Get().Find(engine);
}

/// Calls the engine's next method and records it as an event, to which `write` adds the fields.
template <typename Write, typename... Parameters, typename... Arguments>
void CallAndRecord(SensorVela* engine, void (SensorVela::*next)(Parameters...),
                   std::string_view kind, const Write& write, const Arguments&... arguments) {
  const auto call = [&] { (engine->*next)(arguments...); };
  Recording* const recording = RecordingOf(engine);
  if (recording == nullptr) {
    call();
  } else {
    recording->RecordCall(kind, call, write);
  }
}

}  // namespace

void SensorVela::ReportVendorAtomAsync(const VendorAtom& atom) {
  static const auto next = NextDefinition(&SensorVela::ReportVendorAtomAsync);
  const auto write = [&](EventLine& line) { sensorvela::recorder::WriteOutsideAtom(line, atom); };
  CallAndRecord(this, next, "atom", write, atom);
}

void SensorVela::LogSensorHalError(SensorId sensor, HalCall call, int error) {
  static const auto next = NextDefinition(&SensorVela::LogSensorHalError);
  const auto write = [&](EventLine& line) {
    line.Sensor(sensor).Integer("call", static_cast<std::int32_t>(call)).Integer("error", error);
  };
  CallAndRecord(this, next, "hal_error", write, sensor, call, error);
}

void SensorVela::LogSensorRuntimeError(SensorId sensor, ErrorType type, int code) {
  static const auto next = NextDefinition(&SensorVela::LogSensorRuntimeError);
  const auto write = [&](EventLine& line) {
    line.Sensor(sensor).Integer("type", static_cast<std::int32_t>(type)).Integer("code", code);
  };
  CallAndRecord(this, next, "runtime_error", write, sensor, type, code);
}

void SensorVela::ReportHalSensorEnabled(SensorId sensor, long long sampling_period_ns) {
  static const auto next = NextDefinition(&SensorVela::ReportHalSensorEnabled);
  const auto write = [&](EventLine& line) {
    line.Sensor(sensor).Integer("period_ns", sampling_period_ns);
  };
  CallAndRecord(this, next, "sensor_enabled", write, sensor, sampling_period_ns);
}

void SensorVela::ReportHalSensorDisabled(SensorId sensor) {
  static const auto next = NextDefinition(&SensorVela::ReportHalSensorDisabled);
  const auto write = [&](EventLine& line) { line.Sensor(sensor); };
  CallAndRecord(this, next, "sensor_disabled", write, sensor);
}

void SensorVela::LogSensorLatency(SensorId sensor, long long timestamp_ns) {
  static const auto next = NextDefinition(&SensorVela::LogSensorLatency);
  const auto call = [&] { (this->*next)(sensor, timestamp_ns); };
  Recording* const recording = RecordingOf(this);
  if (recording == nullptr) {
    call();
  } else {
    recording->RecordSample(call, sensor, timestamp_ns);
  }
}

void SensorVela::ReportFirstSample(SensorId sensor, long long latency_ns) {
  static const auto next = NextDefinition(&SensorVela::ReportFirstSample);
  const auto write = [&](EventLine& line) {
    line.Sensor(sensor).Integer("latency_ns", latency_ns);
  };
  CallAndRecord(this, next, "first_sample", write, sensor, latency_ns);
}

void SensorVela::LogSensorProxEvent(const TarnVelaProxEvent& event) {
  static const auto next = NextDefinition(&SensorVela::LogSensorProxEvent);
  const auto write = [&](EventLine& line) {
    line.Integer("int_0", event.int_0)
        .Integer("int_1", event.int_1)
        .Integer("int_2", event.int_2)
        .Integer("int_3", event.int_3)
        .Integer("int_4", event.int_4)
        .Integer("int_5", event.int_5)
        .Integer("int_6", event.int_6)
        .Integer("int_7", event.int_7)
        .Float("float_0", event.float_0)
        .Float("float_1", event.float_1)
        .Float("float_2", event.float_2)
        .Float("float_3", event.float_3)
        .Integer("int_8", event.int_8)
        .Integer("int_9", event.int_9)
        .Float("float_4", event.float_4)
        .Float("float_5", event.float_5)
        .Float("float_6", event.float_6);
  };
  CallAndRecord(this, next, "prox", write, event);
}

void SensorVela::ReportHalLatency(HalOperation operation, SensorId sensor, long long latency_ns) {
  static const auto next = NextDefinition(&SensorVela::ReportHalLatency);
  const auto write = [&](EventLine& line) {
    line.Integer("operation", static_cast<std::int32_t>(operation))
        .Sensor(sensor)
        .Integer("latency_ns", latency_ns);
  };
  CallAndRecord(this, next, "hal_latency", write, operation, sensor, latency_ns);
}

void SensorVela::ReportFirmwareState(int subject_id, FirmwareState state, int detail_code) {
  static const auto next = NextDefinition(&SensorVela::ReportFirmwareState);
  const auto write = [&](EventLine& line) {
    line.Integer("subject_id", subject_id)
        .Integer("state", static_cast<std::int32_t>(state))
        .Integer("detail_code", detail_code);
  };
  CallAndRecord(this, next, "firmware_state", write, subject_id, state, detail_code);
}
