// Why an atom is queued or an error blocked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {

/// What the outputs need of a trace's event.
struct EventInfo {
  std::string_view kind;
  /// From 1.
  std::size_t line = 0;
  /// The identifier of the atoms that the event queues; 0 if it queues none.
  std::int32_t atom_id = 0;
  /// The sensor that the event names.
  std::optional<SensorVela::SensorId> sensor;
  /// The event's own fields, in the order of the line, if they were asked for.
  Json fields = Json::object();
};

struct Cause {
  simulated::VirtualTime::Instant at = {};
  /// Null for the end of a cycle, which queues atoms of several kinds.
  std::shared_ptr<const EventInfo> event;

  /// The kind of the event, or "end of a cycle".
  std::string_view what() const { return event ? event->kind : "end of a cycle"; }
  /// 0 for the end of a cycle.
  std::size_t line() const { return event ? event->line : 0; }
  /// None if the cause can queue atoms of several kinds.
  std::optional<std::int32_t> atom_id() const {
    return event && event->atom_id != 0 ? std::optional(event->atom_id) : std::nullopt;
  }
  std::optional<SensorVela::SensorId> sensor() const {
    return event ? event->sensor : std::nullopt;
  }
};

/// The instant, the kind and the line.
inline Json ToJson(const Cause& cause) {
  Json json = {{"queued_at_ns", cause.at.count()}, {"queued_by", cause.what()}};
  if (cause.event) json["trace_line"] = cause.event->line;
  return json;
}

}  // namespace sensorvela::tools
