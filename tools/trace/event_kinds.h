// The table of everything that can happen in a trace.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <sensorvela/testkit/diagnostics.h>

#include "tools/run/event.h"
#include "tools/trace/field_reader.h"

namespace sensorvela::replay {

/// Where in a trace an event may stand.
enum class Place {
  kAnywhere,
  kStartsEngine,  // Once, and before every event that needs the engine.
  kNeedsEngine,
  kLast,
};

/// What an event must know of those before it.
struct TraceContext {
  testkit::SupplierKind supplier = testkit::SupplierKind::kSecondGeneration;
};

/// What an event's fields say.
struct EventContent {
  Action action;
  /// How long the train goes on that the event starts; 0 if it starts none.
  std::int64_t train_ns = 0;
  /// The one that an engine is started with.
  std::optional<testkit::SupplierKind> supplier = std::nullopt;
};

/// One kind of event. To add a kind is to add an entry to the table in event_kinds.cc.
struct EventKind {
  std::string_view name;
  std::string_view help;
  Place place;
  /// Reads the kind's own fields, beyond `at_ns` and `event`.
  EventContent (*read)(FieldReader& fields, const TraceContext& context);
};

std::span<const EventKind> EventKinds();

/// Throws `EventError` for a name that is not in the table.
const EventKind& FindEventKind(std::string_view name);

/// The table for a reader: a few lines for each kind, with its fields.
std::string DescribeEventKinds();

}  // namespace sensorvela::replay
