// The table of all kinds of event in a trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/diagnostics.h>

#include "tools/run/event.h"
#include "tools/run/recording_plan.h"
#include "tools/text/names.h"
#include "tools/trace/field_reader.h"

namespace sensorvela::tools {

/// The places in a trace at which an event is allowed.
enum class Place {
  kAnywhere,
  kStartsEngine,  // Once, and before every event that needs the engine.
  kNeedsEngine,
  kLast,
  kStartsRecording,  // First of all.
  kInRecording,      // Like `kNeedsEngine`, and in no other trace than a recording.
};

/// What the events so far determine, or all of them for the run.
struct TracePlan {
  SensorNames sensor_names = {};
  /// Negative before the first event.
  simulated::VirtualTime::Instant run_begin{-1};
  simulated::VirtualTime::Instant run_end = {};
  /// The line of the last event.
  std::size_t last_line = 0;
  /// The supplier of the engine.
  testkit::SupplierKind supplier = testkit::SupplierKind::kSecondGeneration;
  /// The stats service has had a process of its own.
  bool has_process = false;
  bool is_recording = false;
  /// Empty if the trace is no recording.
  RecordingPlan recording = {};
};

/// What an event's content depends on besides its fields.
struct TraceContext {
  std::int64_t at_ns = 0;
  testkit::SupplierKind supplier = testkit::SupplierKind::kSecondGeneration;
  /// Of the whole trace; null in the first pass, which runs nothing.
  const RecordingPlan* recording = nullptr;
};

/// The content of an event's fields.
struct EventContent {
  Action action = [](Replay&) {};
  /// The duration of the train that the event starts; 0 if it starts none.
  std::int64_t train_ns = 0;
  /// How long the event lasts; no other may come before it is over. It is a suspension of the
  /// device or, in a recording, a list of samples.
  std::int64_t lasts_ns = 0;
  /// The identifier of the atom that the event brings.
  std::int32_t atom_id = 0;
  /// Adds what the event says about the whole run to the plan.
  std::function<void(TracePlan& plan)> plan = nullptr;
};

/// One kind of event. A new kind needs only an entry in the table in event_kinds.cc.
struct EventKind {
  std::string_view name;
  std::string_view help;
  Place place;
  /// Reads the kind's own fields, beyond `at_ns` and `event`.
  EventContent (*read)(FieldReader& fields, const TraceContext& context);
  /// The identifier of the atoms that it queues; 0 for none, or if its content has it.
  std::int32_t atom_id = 0;
};

std::span<const EventKind> EventKinds();

/// Throws `EventError` for a name that is not in the table.
const EventKind& FindEventKind(std::string_view name);

/// The table as text for people: a few lines for each kind, with its fields.
std::string DescribeEventKinds();

}  // namespace sensorvela::tools
