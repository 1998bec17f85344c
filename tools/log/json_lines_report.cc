#include <optional>
#include <string>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/log/log_report.h"
#include "tools/text/atom_json.h"

namespace sensorvela::devicelog {
namespace {

using replay::Json;

constexpr int kFormatVersion = 1;

Json ToJson(const std::optional<std::int32_t>& number) { return number ? Json(*number) : Json(); }

Json ToJson(const Place& place) {
  return {{"line", place.line}, {"time", place.time.text.empty() ? Json() : Json(place.time.text)}};
}

Json ToJson(const std::optional<Place>& place) { return place ? ToJson(*place) : Json(); }

const char* Name(ServiceAtStart service) {
  switch (service) {
    case ServiceAtStart::kOnline:
      return "online";
    case ServiceAtStart::kWaiting:
      return "waiting";
    case ServiceAtStart::kNotDeclared:
      return "not_declared";
    case ServiceAtStart::kNotFound:
      return "not_found";
  }
  return "?";
}

class Printer {
 public:
  explicit Printer(std::ostream& out) : out_(out) {}

  void Line(const Json& object) { out_ << replay::Dump(object, false) << '\n'; }

  /// With the first and the last time.
  void Line(Json object, const Occurrences& occurrences) {
    object["first"] = ToJson(occurrences.first);
    object["last"] = ToJson(occurrences.last);
    Line(object);
  }

  template <typename Rows>
  void Further(const Limited<Rows>& table, const char* kind) {
    if (table.further_lines == 0) return;
    Line({{"kind", "more"}, {"of", kind}, {"lines", table.further_lines}});
  }

 private:
  std::ostream& out_;
};

struct FamilyNames {
  const char* tally;
  const char* by_sensor;
  const char* enumerator;
  const char* code;
};

void Print(const ErrorFamily& family, const FamilyNames& names, Printer& printer) {
  for (const auto& [enumerator, tally] : family.by_enumerator.rows) {
    printer.Line({{"kind", names.tally},
                  {names.enumerator, enumerator},
                  {"reported", tally.reported},
                  {"blocked", tally.blocked},
                  {"not_in_log", tally.missing}},
                 tally.lines);
  }
  printer.Further(family.by_enumerator, names.tally);
  for (const auto& [error, lines] : family.by_sensor.rows) {
    printer.Line({{"kind", names.by_sensor},
                  {"sensor_high", error.sensor_high},
                  {names.enumerator, error.enumerator},
                  {names.code, error.code},
                  {"lines", lines.count}},
                 lines);
  }
  printer.Further(family.by_sensor, names.by_sensor);
}

void PrintTotals(const LogSummary& summary, Printer& printer) {
  const ErrorTally& hal = summary.hal_errors.total;
  const ErrorTally& runtime = summary.runtime_errors.total;
  printer.Line({{"kind", "log_summary"},
                {"version", kFormatVersion},
                {"lines", summary.lines},
                {"library_lines", summary.library_lines},
                {"unknown_lines", summary.unknown_lines},
                {"engine_starts", summary.starts},
                {"lost_drains", summary.lost_drains},
                {"failed_reports", summary.failed_reports},
                {"errors_reported", hal.reported + runtime.reported},
                {"errors_blocked", hal.blocked + runtime.blocked},
                {"errors_not_in_log", hal.missing + runtime.missing}});
}

}  // namespace

void PrintJsonLines(const LogSummary& summary, std::ostream& out) {
  Printer printer(out);
  PrintTotals(summary, printer);
  for (const EngineStart& engine : summary.engines.rows) {
    const std::optional<std::int64_t> wait_ns = engine.WaitNs();
    printer.Line({{"kind", "engine_start"},
                  {"pid", ToJson(engine.pid)},
                  {"tid", ToJson(engine.tid)},
                  {"service", Name(engine.service)},
                  {"wait_ns", wait_ns ? Json(*wait_ns) : Json()},
                  {"started", ToJson(engine.started)},
                  {"wait_ended", ToJson(engine.wait_ended)}});
  }
  printer.Further(summary.engines, "engine_start");
  for (const ServiceAbsence& absence : summary.absences.rows) {
    printer.Line({{"kind", "service_away"},
                  {"pid", ToJson(absence.pid)},
                  {"lost_drains", absence.drains.count}},
                 absence.drains);
  }
  printer.Further(summary.absences, "service_away");
  for (const auto& [id, reports] : summary.failed_atoms.rows) {
    const testkit::AtomInfo* const atom = testkit::FindAtom(id);
    printer.Line({{"kind", "failed_reports"},
                  {"atom_id", id},
                  {"name", atom == nullptr ? Json() : Json(atom->name)},
                  {"count", reports.count}},
                 reports);
  }
  printer.Further(summary.failed_atoms, "failed_reports");
  Print(summary.hal_errors, {"hal_errors", "hal_errors_of_sensor", "call", "error"}, printer);
  Print(summary.runtime_errors, {"runtime_errors", "runtime_errors_of_sensor", "type", "code"},
        printer);
  for (const CycleEnd& end : summary.cycle_ends.rows) {
    printer.Line({{"kind", "cycle_end"},
                  {"pid", ToJson(end.pid)},
                  {"after", ToJson(end.between.after)},
                  {"before", ToJson(end.between.before)}});
  }
  printer.Further(summary.cycle_ends, "cycle_end");
}

}  // namespace sensorvela::devicelog
