// The calls of an engine that a trace has as events.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace sensorvela::trace_format {

/// `fields` names the numbers among the method's arguments, in their order. A sensor is always
/// `sensor_high` and `sensor_low`, and needs no name here.
struct EngineCall {
  std::string_view event;
  std::array<std::string_view, 3> fields = {};

  constexpr std::size_t FieldCount() const {
    std::size_t count = 0;
    while (count < fields.size() && !fields[count].empty()) ++count;
    return count;
  }
};

template <typename Argument>
concept Number = std::is_integral_v<Argument> || std::is_enum_v<Argument>;

/// Whether the call has a field for each of these arguments that is a number, and no other.
template <const EngineCall& call, typename... Arguments>
inline constexpr bool kNamesNumbers =
    call.FieldCount() == (std::size_t{0} + ... + std::size_t{Number<Arguments>});

inline constexpr EngineCall kAtom = {"atom"};
inline constexpr EngineCall kFirmwareState = {"firmware_state",
                                              {"subject_id", "state", "detail_code"}};
inline constexpr EngineCall kFirstSample = {"first_sample", {"latency_ns"}};
inline constexpr EngineCall kHalError = {"hal_error", {"call", "error"}};
inline constexpr EngineCall kHalLatency = {"hal_latency", {"operation", "latency_ns"}};
inline constexpr EngineCall kProx = {"prox"};
inline constexpr EngineCall kRuntimeError = {"runtime_error", {"type", "code"}};
/// Not in a recording, which has lists of samples.
inline constexpr EngineCall kSample = {"sample", {"timestamp_ns"}};
inline constexpr EngineCall kSensorDisabled = {"sensor_disabled"};
inline constexpr EngineCall kSensorEnabled = {"sensor_enabled", {"period_ns"}};

}  // namespace sensorvela::trace_format
