#include "tools/event_kinds.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/sensor_vela.h"
#include "tools/printable_text.h"
#include "tools/replay.h"

namespace sensorvela::replay {
namespace {

constexpr std::int32_t kMaxCount = 1'000'000;

// Of the names in the description; wider than any.
constexpr std::size_t kNameWidth = 25;

SensorVela::SensorId ReadSensor(FieldReader& fields) {
  const auto high = fields.Integer<std::uint32_t>("sensor_high");
  const auto low = fields.Integer<std::int32_t>("sensor_low");
  return {high, low};
}

std::int32_t ReadCount(FieldReader& fields) {
  return fields.OptionalInteger<std::int32_t>("count", 1, 1, kMaxCount);
}

/// An event without fields of its own.
template <void (Replay::*Step)()>
Action Plain(FieldReader&) {
  return [](Replay& replay) { (replay.*Step)(); };
}

template <Answer Given>
Action AnswerReports(FieldReader& fields) {
  const auto reports = fields.Integer<std::int32_t>("reports", 1, kMaxCount);
  return [=](Replay& replay) { replay.AnswerNext(reports, Given); };
}

Action Nothing(FieldReader&) {
  return [](Replay&) {};
}

constexpr EventKind kEventKinds[] = {
    {"engine_start", "the host constructs the engine", Place::kStartsEngine,
     Plain<&Replay::StartEngine>},
    {"hal_error", "a call into the sensors HAL fails, count times", Place::kNeedsEngine,
     [](FieldReader& fields) -> Action {
       const auto sensor = ReadSensor(fields);
       const auto call = SensorVela::HalCall{fields.Integer<std::int32_t>("call")};
       const auto error = fields.Integer<std::int32_t>("error");
       const auto count = ReadCount(fields);
       return [=](Replay& replay) {
         replay.CallEngine(
             count, [=](SensorVela& engine) { engine.LogSensorHalError(sensor, call, error); });
       };
     }},
    {"runtime_error", "a sensor fails while it runs, count times", Place::kNeedsEngine,
     [](FieldReader& fields) -> Action {
       const auto sensor = ReadSensor(fields);
       const auto type = SensorVela::ErrorType{fields.Integer<std::int32_t>("type")};
       const auto code = fields.Integer<std::int32_t>("code");
       const auto count = ReadCount(fields);
       return [=](Replay& replay) {
         replay.CallEngine(
             count, [=](SensorVela& engine) { engine.LogSensorRuntimeError(sensor, type, code); });
       };
     }},
    {"service_declared", "the device declares the stats service: lookups wait for it",
     Place::kAnywhere, Plain<&Replay::DeclareService>},
    {"service_undeclared", "the device no longer declares it: lookups that wait get none",
     Place::kAnywhere, Plain<&Replay::UndeclareService>},
    {"service_registered", "a new stats service comes up, in place of any other", Place::kAnywhere,
     Plain<&Replay::RegisterService>},
    {"service_unregistered", "the stats service goes away", Place::kAnywhere,
     Plain<&Replay::UnregisterService>},
    {"service_wait_released", "lookups that wait for the stats service get none", Place::kAnywhere,
     Plain<&Replay::ReleaseServiceWaits>},
    {"service_fails", "the stats service answers that many reports with an error", Place::kAnywhere,
     AnswerReports<Answer::kError>},
    {"service_silent", "it answers that many reports without a status", Place::kAnywhere,
     AnswerReports<Answer::kNoStatus>},
    {"time_passes", "nothing happens but the passing of time", Place::kAnywhere, Nothing},
    {"note", "a line of the story, printed with the output", Place::kAnywhere,
     [](FieldReader& fields) -> Action {
       return [text = fields.Text("text")](Replay& replay) { replay.Note(text); };
     }},
    {"end", "the host destroys the engine; must be last, and may be left out", Place::kLast,
     Nothing},
};

}  // namespace

std::span<const EventKind> EventKinds() { return kEventKinds; }

const EventKind& FindEventKind(std::string_view name) {
  std::string known;
  for (const EventKind& kind : kEventKinds) {
    if (kind.name == name) return kind;
    if (!known.empty()) known += ", ";
    known += kind.name;
  }
  throw EventError("unknown event " + Quoted(name) + ": expected one of " + known);
}

std::string DescribeEventKinds() {
  std::string description;
  for (const EventKind& kind : kEventKinds) {
    FieldReader fields;
    kind.read(fields);
    std::string line = "  " + std::string(kind.name);
    line.resize(kNameWidth, ' ');
    description += line + std::string(kind.help) + '\n';
    if (const std::string list = fields.FieldList(); !list.empty()) {
      description += std::string(kNameWidth, ' ') + "fields: " + list + '\n';
    }
  }
  return description;
}

}  // namespace sensorvela::replay
