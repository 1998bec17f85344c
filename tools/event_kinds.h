// The table of everything that can happen in a trace.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "tools/diagnostics.h"
#include "tools/field_reader.h"

namespace sensorvela::replay {

class Replay;

/// What an event does to the replay at its instant.
using Action = std::function<void(Replay&)>;

/// Where in a trace an event may stand.
enum class Place {
  kAnywhere,
  kStartsEngine,  // Once, and before every event that needs the engine.
  kNeedsEngine,
  kLast,
};

/// What an event says that matters beyond it.
struct TraceFacts {
  SupplierKind supplier = SupplierKind::kSecondGeneration;
  /// How long the train goes on that the event starts; 0 if it starts none.
  std::int64_t train_ns = 0;
};

/// One kind of event. To add a kind is to add an entry to the table in event_kinds.cc.
struct EventKind {
  std::string_view name;
  std::string_view help;
  Place place;
  /// Reads the kind's own fields, beyond `at_ns` and `event`, and says what the event does.
  Action (*read)(FieldReader& fields, TraceFacts& facts);
};

std::span<const EventKind> EventKinds();

/// Throws `EventError` for a name that is not in the table.
const EventKind& FindEventKind(std::string_view name);

/// The table for a reader: a few lines for each kind, with its fields.
std::string DescribeEventKinds();

}  // namespace sensorvela::replay
