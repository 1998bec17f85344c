// Takes the place of the library's exported methods. Each calls the library's.
#include <cstdint>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>

#include "recorder/next_definition.h"
#include "recorder/outside_atom.h"
#include "recorder/recordings.h"
#include "trace_format/engine_call.h"
#include "trace_format/record_fields.h"

namespace trace_format = sensorvela::trace_format;
namespace call = trace_format::call;
using sensorvela::recorder::EventLine;
using sensorvela::recorder::NextDefinition;
using sensorvela::recorder::Recording;
using sensorvela::recorder::Recordings;
using sensorvela::recorder::ThisThread;

namespace {

/// The recording for a host's call of the engine; null if the call is not recorded: a call that the
/// engine makes of itself is not.
Recording* RecordingOf(const SensorVela* engine) {
  Recording* const recording = ThisThread().is_in_engine ? nullptr : Recordings::Get().Find(engine);
  return recording != nullptr && recording->is_active() ? recording : nullptr;
}

// Each writes an argument of a call. A number takes the next name for its field.

template <trace_format::Number Number>
void Write(EventLine& line, const std::string_view*& name, Number number) {
  line.Integer(*name++, static_cast<std::int64_t>(number));
}
void Write(EventLine& line, const std::string_view*& /*name*/, SensorVela::SensorId sensor) {
  line.Sensor(sensor);
}
void Write(EventLine& line, const std::string_view*& /*name*/, const SensorVela::VendorAtom& atom) {
  sensorvela::recorder::WriteOutsideAtom(line, atom);
}
void Write(EventLine& line, const std::string_view*& /*name*/,
           const SensorVela::TarnVelaProxEvent& prox) {
  trace_format::ForEachNamedField(
      prox, [&](std::string_view name, auto value) { line.Name(name).Value(value); });
}

/// Calls the engine's next method and records it.
template <const auto& recorded, typename... Arguments>
void CallAndRecord(SensorVela* engine, const Arguments&... arguments) {
  static const auto next = NextDefinition(recorded.method);
  const auto call = [&] { (engine->*next)(arguments...); };
  Recording* const recording = RecordingOf(engine);
  if (recording == nullptr) {
    call();
  } else {
    recording->RecordCall(recorded.event, call, [&](EventLine& line) {
      const std::string_view* name = recorded.fields.data();
      (Write(line, name, arguments), ...);
    });
  }
}

}  // namespace

void SensorVela::ReportVendorAtomAsync(const VendorAtom& atom) {
  CallAndRecord<call::kAtom>(this, atom);
}

void SensorVela::LogSensorHalError(SensorId sensor, HalCall call, int error) {
  CallAndRecord<call::kHalError>(this, sensor, call, error);
}

void SensorVela::LogSensorRuntimeError(SensorId sensor, ErrorType type, int code) {
  CallAndRecord<call::kRuntimeError>(this, sensor, type, code);
}

void SensorVela::ReportHalSensorEnabled(SensorId sensor, long long sampling_period_ns) {
  CallAndRecord<call::kSensorEnabled>(this, sensor, sampling_period_ns);
}

void SensorVela::ReportHalSensorDisabled(SensorId sensor) {
  CallAndRecord<call::kSensorDisabled>(this, sensor);
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
  CallAndRecord<call::kFirstSample>(this, sensor, latency_ns);
}

void SensorVela::LogSensorProxEvent(const TarnVelaProxEvent& event) {
  CallAndRecord<call::kProx>(this, event);
}

void SensorVela::ReportHalLatency(HalOperation operation, SensorId sensor, long long latency_ns) {
  CallAndRecord<call::kHalLatency>(this, operation, sensor, latency_ns);
}

void SensorVela::ReportFirmwareState(int subject_id, FirmwareState state, int detail_code) {
  CallAndRecord<call::kFirmwareState>(this, subject_id, state, detail_code);
}
