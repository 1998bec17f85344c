// The calls of an engine that a trace has as events.
#pragma once

#include <array>
#include <string_view>

namespace sensorvela::trace_format {

/// Of the arguments, each number has a field, in their order; a sensor has its own two.
struct EngineCall {
  std::string_view event;
  std::array<std::string_view, 3> fields = {};
};

inline constexpr EngineCall kAtom = {"atom"};
inline constexpr EngineCall kFirmwareState = {"firmware_state",
                                              {"subject_id", "state", "detail_code"}};
inline constexpr EngineCall kFirstSample = {"first_sample", {"latency_ns"}};
inline constexpr EngineCall kHalError = {"hal_error", {"call", "error"}};
inline constexpr EngineCall kHalLatency = {"hal_latency", {"operation", "latency_ns"}};
inline constexpr EngineCall kProx = {"prox"};
inline constexpr EngineCall kRuntimeError = {"runtime_error", {"type", "code"}};
inline constexpr EngineCall kSample = {"sample", {"timestamp_ns"}};
inline constexpr EngineCall kSensorDisabled = {"sensor_disabled"};
inline constexpr EngineCall kSensorEnabled = {"sensor_enabled", {"period_ns"}};

}  // namespace sensorvela::trace_format
