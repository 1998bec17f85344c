#include "tools/report/json_lines_report.h"

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::tools {
namespace {

class JsonLinesReport : public RunObserver {
 public:
  JsonLinesReport(std::ostream& out, const SensorNames& names) : out_(out), names_(names) {
    Line({{"kind", "replay"}, {"version", 1}});
  }

  void OnAtom(Instant at, const AtomFact& atom) override {
    const bool is_lost = atom.atom == nullptr;
    Json object = {{"kind", is_lost ? "dropped" : "atom"}, {"at_ns", at.count()}};
    if (!is_lost) object["answer"] = AnswerName(atom.outcome);
    if (atom.id) object["atom_id"] = *atom.id;
    if (!atom.name.empty()) object["name"] = atom.name;
    if (is_lost) {
      if (atom.sensor) AddSensor(*atom.sensor, object);
      object.update(ToJson(atom.cause));
    } else {
      if (!atom.atom->reverseDomainName.empty()) object["domain"] = atom.atom->reverseDomainName;
      if (atom.sensor) AddName(*atom.sensor, object);
      if (atom.outcome != Outcome::kDelivered) object.update(ToJson(atom.cause));
      object["values"] = NamedValues(*atom.atom);
    }
    Line(object);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    Json object = {{"kind", "blocked"}, {"at_ns", at.count()}, {"event", cause.what()}};
    if (cause.sensor()) AddSensor(*cause.sensor(), object);
    object["trace_line"] = cause.line();
    object["log"] = text;
    Line(object);
  }

  void OnLogLine(Instant at, int priority, std::string_view tag, std::string_view text) override {
    Line({{"kind", "log"},
          {"at_ns", at.count()},
          {"priority", PriorityLetter(priority)},
          {"tag", tag},
          {"text", text}});
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    Line({{"kind", "suspended"}, {"at_ns", at.count()}, {"for_ns", duration.count()}});
  }

  void OnNote(Instant at, std::string_view text) override {
    Line({{"kind", "note"}, {"at_ns", at.count()}, {"text", text}});
  }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    for (const SensorSummary& sensor : summary.sensors) Sensor(sensor);
    Line({{"kind", "summary"},
          {"delivered", summary.delivered},
          {"failed", summary.failed},
          {"dropped", summary.dropped},
          {"blocked_by_cap", summary.blocked_by_cap},
          {"cycles_ended", summary.cycles_ended ? Json(*summary.cycles_ended) : Json()}});
  }

 private:
  void Sensor(const SensorSummary& summary) {
    Json object = {{"kind", "sensor"}};
    AddSensor(summary.sensor, object);
    object["samples"] = summary.arrived.samples;
    object["reported_samples"] = summary.reported.samples;
    object["not_reported_samples"] = summary.NotReported();
    object["late_samples"] = summary.reported.late;
    object["latency_histogram"] = summary.reported.bands;
    Line(object);
  }

  void AddSensor(SensorVela::SensorId sensor, Json& object) const {
    object["sensor_high"] = sensor.high;
    object["sensor_low"] = sensor.low;
    AddName(sensor, object);
  }

  void AddName(SensorVela::SensorId sensor, Json& object) const {
    const std::string_view name = names_.NameOf(sensor);
    if (!name.empty()) object["sensor_name"] = name;
  }

  void Line(const Json& object) { out_ << Dump(object, false) << '\n'; }

  std::ostream& out_;
  const SensorNames& names_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out, const SensorNames& names) {
  return std::make_unique<JsonLinesReport>(out, names);
}

}  // namespace sensorvela::tools
