// The calls of an engine that a trace has as events.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::trace_format {

template <typename Argument>
concept Number = std::is_integral_v<Argument> || std::is_enum_v<Argument>;

/// `fields` names the numbers among the method's arguments, in their order. A sensor is always
/// `sensor_high` and `sensor_low`, and needs no name here.
template <typename... Arguments>
struct EngineCall {
  std::string_view event;
  void (SensorVela::*method)(Arguments...);
  std::array<std::string_view, (std::size_t{0} + ... + std::size_t{Number<Arguments>})> fields = {};
};

namespace call {

inline constexpr EngineCall kAtom = {"atom", &SensorVela::ReportVendorAtomAsync};
inline constexpr EngineCall kFirmwareState = {
    "firmware_state", &SensorVela::ReportFirmwareState, {"subject_id", "state", "detail_code"}};
inline constexpr EngineCall kFirstSample = {
    "first_sample", &SensorVela::ReportFirstSample, {"latency_ns"}};
inline constexpr EngineCall kHalError = {
    "hal_error", &SensorVela::LogSensorHalError, {"call", "error"}};
inline constexpr EngineCall kHalLatency = {
    "hal_latency", &SensorVela::ReportHalLatency, {"operation", "latency_ns"}};
inline constexpr EngineCall kProx = {"prox", &SensorVela::LogSensorProxEvent};
inline constexpr EngineCall kRuntimeError = {
    "runtime_error", &SensorVela::LogSensorRuntimeError, {"type", "code"}};
/// Not in a recording, which has lists of samples.
inline constexpr EngineCall kSample = {"sample", &SensorVela::LogSensorLatency, {"timestamp_ns"}};
inline constexpr EngineCall kSensorDisabled = {"sensor_disabled",
                                               &SensorVela::ReportHalSensorDisabled};
inline constexpr EngineCall kSensorEnabled = {
    "sensor_enabled", &SensorVela::ReportHalSensorEnabled, {"period_ns"}};

}  // namespace call

}  // namespace sensorvela::trace_format
