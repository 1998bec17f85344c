#include "tools/report/json_lines_report.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::tools {
namespace {

/// "lost_in_buffer" for "lost in buffer".
std::string Word(std::string caption) {
  std::ranges::replace(caption, ' ', '_');
  return caption;
}

class JsonLinesReport : public RunObserver {
 public:
  JsonLinesReport(std::ostream& out, const SensorNames& names) : out_(out), names_(names) {
    Line({{"kind", "replay"}, {"version", 1}});
  }

  void OnAtom(Instant at, const AtomFact& atom) override {
    const bool is_taken = atom.fate == BufferFate::kTaken;
    Json fields;
    if (!is_taken) {
      fields["fate"] = Word(CaptionOf(atom.fate));
    } else if (atom.answer) {
      fields["answer"] = AnswerName(*atom.answer);
    }
    if (atom.id) fields["atom_id"] = *atom.id;
    if (!atom.name.empty()) fields["name"] = atom.name;
    if (!atom.answer) {
      if (atom.sensor) AddSensor(*atom.sensor, fields);
      fields.update(ToJson(atom.cause));
      Line("dropped", at, fields);
      return;
    }
    if (!atom.atom->reverseDomainName.empty()) fields["domain"] = atom.atom->reverseDomainName;
    if (atom.sensor) AddName(*atom.sensor, fields);
    if (*atom.answer != testkit::Answer::kOk || !is_taken) fields.update(ToJson(atom.cause));
    fields["values"] = NamedValues(*atom.atom);
    Line(is_taken ? "atom" : "not_taken", at, fields);
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

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    Line("suspended", at, {{"for_ns", duration.count()}});
  }

  void OnNote(Instant at, std::string_view text) override { Line("note", at, {{"text", text}}); }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    for (const SensorSummary& sensor : summary.sensors) Sensor(sensor);
    Line({{"kind", "summary"},
          {"delivered", summary.delivered},
          {"failed", summary.failed},
          {"did_not_fit", summary.did_not_fit},
          {"dropped", summary.dropped},
          {"left_in_buffer", summary.left_in_buffer},
          {"lost_in_buffer", summary.lost_in_buffer ? Json(*summary.lost_in_buffer) : Json()},
          {"blocked_by_cap", summary.blocked_by_cap},
          {"cycles_ended", summary.cycles_ended ? Json(*summary.cycles_ended) : Json()}});
  }

 private:
  void Sensor(const SensorSummary& summary) {
    Json object = {{"kind", "sensor"}};
    AddSensor(summary.sensor, object);
    object.update({{"samples", summary.arrived.samples},
                   {"reported_samples", summary.reported.samples},
                   {"not_reported_samples", summary.NotReported()},
                   {"late_samples", summary.reported.late},
                   {"latency_histogram", summary.reported.bands}});
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
