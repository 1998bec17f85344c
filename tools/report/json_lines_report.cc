#include "tools/report/json_lines_report.h"

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/report/sensor_json.h"
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
    Json fields;
    if (atom.answer) fields["answer"] = AnswerName(*atom.answer);
    if (atom.id) fields["atom_id"] = *atom.id;
    if (!atom.name.empty()) fields["name"] = atom.name;
    if (atom.dropped) {
      if (atom.sensor) AddSensor(*atom.sensor, fields);
      fields["why"] = WordOf(*atom.dropped);
      fields.update(ToJson(atom.cause));
      Line("dropped", at, fields);
      return;
    }
    if (!atom.atom->reverseDomainName.empty()) fields["domain"] = atom.atom->reverseDomainName;
    if (atom.sensor) AddName(*atom.sensor, fields);
    fields.update(ToJson(atom.cause));
    fields["values"] = NamedValues(*atom.atom);
    Line("atom", at, fields);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    Json fields = {{"event", cause.what()}};
    if (cause.sensor()) AddSensor(*cause.sensor(), fields);
    fields.update({{"trace_line", cause.line()}, {"log", text}});
    Line("blocked", at, fields);
  }

  void OnLogLine(Instant at, int priority, std::string_view tag, std::string_view text) override {
    Line("log", at, {{"priority", PriorityLetter(priority)}, {"tag", tag}, {"text", text}});
  }

  void OnOutage(const Outage& outage) override {
    Line("outage", outage.to,
         {{"since_ns", outage.from.count()},
          {"for_ns", (outage.to - outage.from).count()},
          {"why", WordOf(outage.reason)},
          {"first", outage.is_first},
          {"back", !outage.lasts}});
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    Line("suspended", at, {{"for_ns", duration.count()}});
  }

  void OnNote(Instant at, std::string_view text) override { Line("note", at, {{"text", text}}); }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    for (const SensorSummary& sensor : summary.sensors) Sensor(sensor);
    Line({{"kind", "summary"},
          {"delivered", summary.delivered},
          {"failed", summary.failed},
          {"dropped", summary.dropped},
          {"blocked_by_cap", summary.blocked_by_cap},
          {"cycles_ended", summary.cycles_ended ? Json(*summary.cycles_ended) : Json()},
          {"outages", summary.outages},
          {"away_ns", summary.away.count()}});
  }

 private:
  void Sensor(const SensorSummary& summary) {
    Json object = {{"kind", "sensor"}};
    AddSensor(summary.sensor, object);
    const auto& reported = summary.reported;
    object.update({{"samples", summary.arrived.counts.samples},
                   {"arrived", ToJson(summary.arrived)},
                   {"reported_samples", reported ? Json(reported->samples) : Json()},
                   {"not_reported_samples", summary.not_reported.Total()},
                   {"not_reported", ToJson(summary.not_reported)},
                   {"late_samples", reported ? Json(reported->late) : Json()},
                   {"latency_histogram", reported ? Json(reported->bands) : Json()}});
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

  void Line(const char* kind, Instant at, const Json& fields) {
    Json object = {{"kind", kind}, {"at_ns", at.count()}};
    object.update(fields);
    Line(object);
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
