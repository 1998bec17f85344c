#include "tools/trace/event_kinds.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/service_process.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/run/replay.h"
#include "tools/text/printable_text.h"
#include "tools/text/wrapped_text.h"
#include "tools/trace/content_readers.h"
#include "trace_format/engine_call.h"
#include "trace_format/record_fields.h"
#include "trace_format/words.h"

namespace sensorvela::tools {

namespace call = trace_format::call;
namespace event = trace_format::event;
namespace field = trace_format::field;

namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using testkit::Answer;
using testkit::SupplierKind;

constexpr std::int32_t kMaxCount = 1'000'000;
// Six hours each, and the monotonic clock has 64 bits.
constexpr std::int64_t kMaxCycles = 400'000;
constexpr std::int64_t kMaxReports = 1'000'000'000'000;

// The widths of the description's column of names, wider than any name, and of its lines.
constexpr std::size_t kNameWidth = 25;
constexpr std::size_t kLineWidth = 100;

SupplierKind ReadSupplier(FieldReader& fields) {
  namespace kinds = trace_format::supplier;
  constexpr std::string_view kExpected = "one of none, first, second";
  const JsonValue* const supplier = fields.OptionalValue(field::kSupplier, kExpected);
  const std::string_view kind = supplier != nullptr ? supplier->Text() : kinds::kSecond;
  if (kind == kinds::kNone) return SupplierKind::kNone;
  if (kind == kinds::kFirst) return SupplierKind::kFirstGeneration;
  if (kind == kinds::kSecond) return SupplierKind::kSecondGeneration;
  supplier->Reject("is " + Quoted(kind), kExpected);
}

/// Reads an argument of a call. A number takes the next name for its field.
template <typename Argument>
Argument ReadArgument(FieldReader& fields, const std::string_view*& name) {
  if constexpr (std::is_enum_v<Argument>) {
    return Argument{fields.Integer<std::int32_t>(*name++)};
  } else if constexpr (trace_format::Number<Argument>) {
    return fields.Integer<Argument>(*name++);
  } else if constexpr (std::is_same_v<Argument, SensorVela::SensorId>) {
    return fields.Sensor();
  } else {
    Argument record;
    trace_format::ForEachNamedField(record, [&](std::string_view field_name, auto& number) {
      fields.OptionalNumber(field_name, number);
    });
    return record;
  }
}

/// The call, with the arguments that the fields have, of a method of the engine or the replay.
template <const auto& engine_call, typename Class, typename... Parameters>
auto ReadCall(FieldReader& fields, void (Class::*method)(Parameters...)) {
  const std::string_view* name = engine_call.fields.data();
  const std::tuple<std::remove_cvref_t<Parameters>...> arguments = {
      ReadArgument<std::remove_cvref_t<Parameters>>(fields, name)...};
  return [=](Class& object) {
    std::apply([&](const auto&... argument) { (object.*method)(argument...); }, arguments);
  };
}

/// A call of the engine, which the replay makes.
template <const auto& engine_call>
EventContent CallEngine(FieldReader& fields, const TraceContext&) {
  return {[call_once = ReadCall<engine_call>(fields, engine_call.method)](Replay& replay) {
    replay.CallEngine(call_once);
  }};
}

/// A call of the engine of which the replay does more.
template <const auto& engine_call, auto method>
EventContent CallReplay(FieldReader& fields, const TraceContext&) {
  return {ReadCall<engine_call>(fields, method)};
}

/// An error, reported as often as the event says.
template <const auto& engine_call>
EventContent ReportErrors(FieldReader& fields, const TraceContext&) {
  const auto report = ReadCall<engine_call>(fields, engine_call.method);
  const auto count = fields.OptionalInteger<std::int32_t>("count", 1, 1, kMaxCount);
  return {[=](Replay& replay) { replay.ReportErrors(count, report); }};
}

/// An event without fields of its own.
template <void (Replay::*Step)()>
EventContent Plain(FieldReader&, const TraceContext&) {
  return {[](Replay& replay) { (replay.*Step)(); }};
}

constexpr std::string_view kTimePerAtom = "atom_ns";
/// A day.
constexpr std::int64_t kMaxTimePerAtomNs = 86'400'000'000'000;

std::chrono::nanoseconds ReadTimePerAtom(FieldReader& fields) {
  return std::chrono::nanoseconds(fields.Integer<std::int64_t>(kTimePerAtom, 0, kMaxTimePerAtomNs));
}

EventContent RegisterService(FieldReader& fields, const TraceContext&) {
  constexpr std::int64_t kInHost = -1;
  const auto atom_ns =
      fields.OptionalInteger<std::int64_t>(kTimePerAtom, kInHost, 0, kMaxTimePerAtomNs);
  if (atom_ns == kInHost) {
    return {[](Replay& replay) { replay.RegisterService(std::nullopt); }};
  }
  return {
      .action = [=](Replay& replay) { replay.RegisterService(std::chrono::nanoseconds(atom_ns)); },
      .plan = [](TracePlan& plan) { plan.has_process = true; }};
}

void NeedProcess(TracePlan& plan) {
  if (plan.has_process) return;
  throw EventError(
      "a service without a process of its own: expected a service_registered with atom_ns before");
}

template <void (simulated::ServiceProcess::*Change)()>
EventContent ChangeProcess(FieldReader&, const TraceContext&) {
  return {.action = [](Replay& replay) { (replay.process().*Change)(); }, .plan = NeedProcess};
}

/// A change of what the service manager says of the stats service.
template <void (*Change)(const std::string& instance)>
EventContent ChangeService(FieldReader&, const TraceContext&) {
  return {[](Replay&) { Change(testkit::kStatsInstance); }};
}

template <Answer Given>
EventContent AnswerReports(FieldReader& fields, const TraceContext&) {
  const auto reports = fields.Integer<std::int32_t>(field::kReports, 1, kMaxCount);
  return {[=](Replay& replay) { replay.AnswerNext(reports, Given); }};
}

/// So many reports are known to have ended.
void KnowReports(RecordingPlan& plan, std::int64_t reports) {
  if (reports < plan.reports) {
    throw EventError("reports " + std::to_string(reports) + ", while " +
                     std::to_string(plan.reports) +
                     " have ended already: expected no number to be less than an earlier one");
  }
  plan.reports = reports;
}

/// A report of a recording that did not succeed.
template <Answer Given>
EventContent FailedReport(FieldReader& fields, const TraceContext&) {
  const auto report = fields.Integer<std::int64_t>(field::kReport, 1, kMaxReports);
  return {.plan = [=](TracePlan& trace) {
    RecordingPlan& plan = trace.recording;
    if (report <= plan.reports) {
      throw EventError("report " + std::to_string(report) + ", while " +
                       std::to_string(plan.reports) +
                       " have ended already: expected the reports in their order");
    }
    if (plan.lookups.empty() || !plan.lookups.back().found) {
      throw EventError("a report without the service: expected a lookup_found before it");
    }
    plan.reports = report;
    plan.failures.push_back({report, Given});
  }};
}

template <bool found>
EventContent LookupEnds(FieldReader& fields, const TraceContext&) {
  const auto reports = fields.Integer<std::int64_t>(field::kReports, 0, kMaxReports);
  return {.action = [](Replay& replay) { replay.recording().EndLookup(found); },
          .plan =
              [=](TracePlan& trace) {
                KnowReports(trace.recording, reports);
                trace.recording.lookups.push_back({found, reports});
              }};
}

/// How often an engine asks its supplier at the end of a cycle.
int Questions(SupplierKind supplier) {
  if (supplier == SupplierKind::kNone) return 0;
  return supplier == SupplierKind::kFirstGeneration ? 4 : 10;
}

constexpr EventKind kEventKinds[] = {
    {event::kEngineStart,
     "the host constructs the engine; supplier: none, first or second generation",
     Place::kStartsEngine,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto supplier = ReadSupplier(fields);
       return {.action = [=](Replay& replay) { replay.StartEngine(supplier); },
               .plan = [=](TracePlan& plan) { plan.supplier = supplier; }};
     }},
    {call::kHalError.event, "a call into the sensors HAL fails, count times", Place::kNeedsEngine,
     ReportErrors<call::kHalError>, atoms::SensorHalErrorDetected::kAtomId},
    {call::kRuntimeError.event, "a sensor fails while it runs, count times", Place::kNeedsEngine,
     ReportErrors<call::kRuntimeError>, atoms::SensorRuntimeErrorDetected::kAtomId},
    {call::kSensorEnabled.event, "a sensor is enabled with that sampling period",
     Place::kNeedsEngine, CallReplay<call::kSensorEnabled, &Replay::EnableSensor>,
     atoms::HalSensorStateChanged::kAtomId},
    {call::kSensorDisabled.event, "a sensor is disabled", Place::kNeedsEngine,
     CallReplay<call::kSensorDisabled, &Replay::DisableSensor>,
     atoms::HalSensorStateChanged::kAtomId},
    {call::kSample.event, "a sample that bears that timestamp arrives at at_ns",
     Place::kNeedsEngine, CallReplay<call::kSample, &Replay::DeliverSample>,
     atoms::SensorFirstSampleReported::kAtomId},
    {"samples",
     "a train of count samples: the first bears the timestamp at_ns, each next one that of the one "
     "before plus interval_ns, and gap_ns more after every gap_every samples; each arrives "
     "latency_ns after its timestamp",
     Place::kNeedsEngine,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto train = ReadSampleTrain(fields);
       return {.action = [=](Replay& replay) { replay.StartTrain(train); },
               .train_ns = train.DurationNs()};
     },
     atoms::SensorFirstSampleReported::kAtomId},
    {call::kFirstSample.event,
     "the host reports a first sample beside the one that the engine reports", Place::kNeedsEngine,
     CallReplay<call::kFirstSample, &Replay::ReportFirstSample>,
     atoms::SensorFirstSampleReported::kAtomId},
    {call::kProx.event, "a proximity status report; fields left out are 0", Place::kNeedsEngine,
     CallEngine<call::kProx>, atoms::ProxStatusReported::kAtomId},
    {call::kHalLatency.event, "an operation of the sensors HAL took that long", Place::kNeedsEngine,
     CallEngine<call::kHalLatency>, atoms::SensorHalLatencyRecorded::kAtomId},
    {call::kFirmwareState.event, "a sensor firmware changes its state", Place::kNeedsEngine,
     CallEngine<call::kFirmwareState>, atoms::SensorFirmwareStateChanged::kAtomId},
    {call::kAtom.event,
     "an atom that is not of the engine's making; each of the values is an object of one field, "
     "named after its kind: int, long, float, string, bool, ints, longs, floats, strings, bools or "
     "bytes",
     Place::kNeedsEngine,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto atom = ReadOutsideAtom(fields);
       return {
           .action =
               [=](Replay& replay) {
                 replay.CallEngine([&](SensorVela& engine) { engine.ReportVendorAtomAsync(atom); });
               },
           .atom_id = atom.atomId};
     }},
    {"diagnostics",
     "what the supplier answers when a cycle ends, from now on; an item left out is absent, or all "
     "zeros from a first-generation supplier, which has only processor (4 numbers) and the queues "
     "(6 each). Lists of records: ipc_error_rates (4 numbers each), sensor_usages (7), "
     "gating_contexts (9), and memory, objects with kind and any of shared_value, "
     "pressure_value_1 to pressure_value_4, serviceability_value_1, serviceability_value_2, "
     "bucket_allocation_count and bucket_duration_ms (20 numbers each). dram_exception has 5 "
     "numbers, prox_stats 20",
     Place::kNeedsEngine,
     [](FieldReader& fields, const TraceContext& context) -> EventContent {
       const auto diagnostics = ReadDiagnostics(fields, context.supplier);
       return {[=](Replay& replay) { replay.SetDiagnostics(diagnostics); }};
     }},
    {"service_declared", "the device declares the stats service: an engine that starts says so",
     Place::kAnywhere, ChangeService<simulated::DeclareService>},
    {"service_undeclared", "it no longer does; lookups wait for the service all the same",
     Place::kAnywhere, ChangeService<simulated::UndeclareService>},
    {"service_registered",
     "a new stats service comes up, in place of any other; with atom_ns it has a process of its "
     "own, which takes that long for an atom, otherwise it is in the host's own",
     Place::kAnywhere, RegisterService},
    {"service_unregistered", "the stats service goes away: lookups wait until it is back",
     Place::kAnywhere, Plain<&Replay::UnregisterService>},
    {"service_refused",
     "the host may not look the stats service up: new lookups get none, and those that wait go on "
     "waiting",
     Place::kAnywhere, Plain<&Replay::RefuseService>},
    {"service_allowed", "the host may look it up again", Place::kAnywhere,
     Plain<&Replay::AllowService>},
    {"service_wait_released", "the service manager fails once: a lookup that waits gets none",
     Place::kAnywhere, ChangeService<simulated::ReleaseServiceWaits>},
    {"service_takes", "the service's process takes that long for an atom, from the next one on",
     Place::kAnywhere,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto time = ReadTimePerAtom(fields);
       return {.action = [=](Replay& replay) { replay.process().SetTimePerAtom(time); },
               .plan = NeedProcess};
     }},
    {"service_stops",
     "the service's process stops: it takes no atom, and lookups wait for its answer",
     Place::kAnywhere, ChangeProcess<&simulated::ServiceProcess::Stop>},
    {"service_goes_on", "it goes on", Place::kAnywhere,
     ChangeProcess<&simulated::ServiceProcess::GoOn>},
    {"service_dies",
     "the service's process dies, and what is in its buffer is lost; it stays registered for one "
     "more lookup, which gets none",
     Place::kAnywhere,
     [](FieldReader&, const TraceContext&) -> EventContent {
       return {.action = [](Replay& replay) { replay.KillProcess(); }, .plan = NeedProcess};
     }},
    {"service_fails", "that many reports fail, as when the service's process has died",
     Place::kAnywhere, AnswerReports<Answer::kError>},
    {"service_silent", "that many reports end without a status", Place::kAnywhere,
     AnswerReports<Answer::kNoStatus>},
    {event::kSuspended,
     "the device sleeps for that long: at_ns and the sensors' clock go on, the engine's cycle "
     "stands still, and samples of a train that would arrive meanwhile arrive at the end; no event "
     "may come before that",
     Place::kAnywhere,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto for_ns = fields.Integer<std::int64_t>(field::kForNs, 0, trace_format::kMaxTimeNs);
       return {.action = [=](Replay& replay) { replay.Suspend(std::chrono::nanoseconds(for_ns)); },
               .lasts_ns = for_ns};
     }},
    {"sensor_name",
     "all output calls the sensor by that name; the last one holds for the whole run",
     Place::kAnywhere,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto sensor = fields.Sensor();
       return {.plan = [=, name = std::string(fields.Text("name"))](TracePlan& plan) {
         plan.sensor_names.Set(sensor, name);
       }};
     }},
    {"time_passes", "nothing happens but the passing of time", Place::kAnywhere,
     [](FieldReader&, const TraceContext&) { return EventContent(); }},
    {"note", "a line of the story, printed with the output", Place::kAnywhere,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       return {[text = std::string(fields.Text("text"))](Replay& replay) { replay.Note(text); }};
     }},
    {event::kEnd,
     "the host destroys the engine, and trains under way are cut; must be last; without it the run "
     "ends with the last event and the last train; a recording says how many reports had ended",
     Place::kLast,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       constexpr std::int64_t kAbsent = -1;
       const auto reports =
           fields.OptionalInteger<std::int64_t>(field::kReports, kAbsent, 0, kMaxReports);
       return {.action = [](Replay& replay) { replay.End(); },
               .plan =
                   [=](TracePlan& plan) {
                     if (reports == kAbsent) return;
                     if (!plan.is_recording) {
                       throw EventError("an end with reports: expected them in recordings only");
                     }
                     KnowReports(plan.recording, reports);
                     plan.recording.has_end = true;
                   }};
     }},
    {event::kRecording,
     "the trace is a recording: what follows happened to an engine in a real process",
     Place::kStartsRecording,
     [](FieldReader& fields, const TraceContext& context) -> EventContent {
       fields.Integer<std::int32_t>(field::kVersion, 1, 1);
       return {[plan = context.recording](Replay& replay) { replay.FollowRecording(*plan); }};
     }},
    {event::kSampleLists, "samples of several sensors: a list for each, as the document says",
     Place::kInRecording,
     [](FieldReader& fields, const TraceContext& context) -> EventContent {
       auto samples = ReadSampleLists(fields, context.at_ns);
       const std::int64_t last_ns = samples.empty() ? context.at_ns : samples.back().arrival_ns;
       return {.action = [samples = std::move(samples)](
                             Replay& replay) { replay.DeliverSamples(samples); },
               .lasts_ns = last_ns - context.at_ns};
     },
     atoms::SensorFirstSampleReported::kAtomId},
    {event::kServiceFoundDeclared, "the engine has found the service declared when it started",
     Place::kInRecording,
     [](FieldReader&, const TraceContext&) -> EventContent {
       return {.plan = [](TracePlan& plan) { plan.recording.service_declared = true; }};
     }},
    {event::kLookupWaits, "a lookup of the engine has waited for the service since then",
     Place::kInRecording,
     [](FieldReader&, const TraceContext&) -> EventContent {
       return {[](Replay& replay) { replay.recording().LookupWaits(); }};
     }},
    {event::kLookupFound, "it has found the service, after that many reports in all",
     Place::kInRecording, LookupEnds<true>},
    {event::kLookupFoundNone, "it has found none, and its atoms are dropped", Place::kInRecording,
     LookupEnds<false>},
    {event::kReportFailed, "that report has failed, counted from 1", Place::kInRecording,
     FailedReport<Answer::kError>},
    {event::kReportSilent, "that report has ended without a status", Place::kInRecording,
     FailedReport<Answer::kNoStatus>},
    {event::kReportsSoFar,
     "so many reports have ended by then; for a recording that is cut, the rest is not known",
     Place::kInRecording,
     [](FieldReader& fields, const TraceContext&) -> EventContent {
       const auto reports = fields.Integer<std::int64_t>(field::kReports, 0, kMaxReports);
       return {.plan = [=](TracePlan& plan) { KnowReports(plan.recording, reports); }};
     }},
    {event::kCycleEnded, "a cycle has ended, and the engine asks the supplier", Place::kInRecording,
     [](FieldReader&, const TraceContext& context) -> EventContent {
       return {.action = [](Replay& replay) { replay.recording().EndCycle(); },
               .plan =
                   [questions = Questions(context.supplier)](TracePlan& trace) {
                     RecordingPlan& plan = trace.recording;
                     if (++plan.cycles > kMaxCycles) {
                       throw EventError("more cycles than the clock can count: expected at most " +
                                        std::to_string(kMaxCycles));
                     }
                     plan.answers_left = questions;
                   }};
     }},
    {event::kSupplierAnswers,
     "the supplier answers the engine's next question; the fields are those of diagnostics, and an "
     "answer without the item is absent",
     Place::kInRecording,
     [](FieldReader& fields, const TraceContext& context) -> EventContent {
       const auto answer = ReadDiagnostics(fields, context.supplier);
       return {.action = [=](Replay& replay) { replay.recording().Answer(answer); },
               .plan =
                   [](TracePlan& plan) {
                     if (--plan.recording.answers_left < 0) {
                       throw EventError(
                           "an answer that the engine has not asked for: expected a cycle_ended "
                           "before the answers");
                     }
                   }};
     }},
};

}  // namespace

std::span<const EventKind> EventKinds() { return kEventKinds; }

const EventKind& FindEventKind(std::string_view name) {
  for (const EventKind& kind : kEventKinds) {
    if (kind.name == name) return kind;
  }
  std::string known;
  for (const EventKind& kind : kEventKinds) {
    if (!known.empty()) known += ", ";
    known += kind.name;
  }
  throw EventError("unknown event " + Quoted(name) + ": expected one of " + known);
}

std::string DescribeEventKinds() {
  const auto in_right_column = [](std::string_view text) {
    return Wrapped(text, kLineWidth, kNameWidth, kNameWidth);
  };
  std::string description;
  for (const EventKind& kind : kEventKinds) {
    FieldReader fields;
    kind.read(fields, {});
    std::string name = "  " + std::string(kind.name);
    name.resize(kNameWidth, ' ');
    description += name + in_right_column(kind.help);
    if (const std::string list = fields.FieldList(); !list.empty()) {
      description += std::string(kNameWidth, ' ') + in_right_column("fields: " + list);
    }
  }
  return description;
}

}  // namespace sensorvela::tools
