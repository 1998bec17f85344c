#include "tools/report/json_lines_report.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/report/finding_text.h"
#include "tools/report/sensor_json.h"
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
  JsonLinesReport(std::ostream& out, const SensorNames& names, bool findings_only)
      : out_(out), names_(names), findings_only_(findings_only) {
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
    if (atom.dropped) {
      if (atom.sensor) AddSensor(*atom.sensor, names_, fields);
      fields["why"] = WordOf(*atom.dropped);
      fields.update(ToJson(atom.cause));
      Line("dropped", at, fields);
      return;
    }
    if (!atom.atom->reverseDomainName.empty()) fields["domain"] = atom.atom->reverseDomainName;
    if (atom.sensor) AddSensorName(*atom.sensor, names_, fields);
    fields.update(ToJson(atom.cause));
    fields["values"] = NamedValues(*atom.atom);
    Line(is_taken ? "atom" : "not_taken", at, fields);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    Json fields = {{"event", cause.what()}};
    if (cause.sensor()) AddSensor(*cause.sensor(), names_, fields);
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
    for (const Finding& finding : summary.findings) {
      Line("finding", finding.at, ToJson(finding, names_));
    }
    if (findings_only_) return;
    for (const SensorSummary& sensor : summary.sensors) Sensor(sensor);
    Line({{"kind", "summary"},
          {"delivered", summary.delivered},
          {"failed", summary.failed},
          {"did_not_fit", summary.did_not_fit},
          {"dropped", summary.dropped},
          {"left_in_buffer", summary.left_in_buffer},
          {"lost_in_buffer", summary.lost_in_buffer ? Json(*summary.lost_in_buffer) : Json()},
          {"blocked_by_cap", summary.blocked_by_cap},
          {"cycles_ended", summary.cycles_ended ? Json(*summary.cycles_ended) : Json()},
          {"findings", summary.findings.size()},
          {"outages", summary.outages},
          {"away_ns", summary.away.count()}});
  }

 private:
  void Sensor(const SensorSummary& summary) {
    Json object = {{"kind", "sensor"}};
    AddSensor(summary.sensor, names_, object);
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

  /// Something that happens.
  void Line(std::string_view kind, Instant at, const Json& fields) {
    if (findings_only_ && kind != "finding") return;
    Json object = {{"kind", kind}, {"at_ns", at.count()}};
    object.update(fields);
    Line(object);
  }

  void Line(const Json& object) { out_ << Dump(object, false) << '\n'; }

  std::ostream& out_;
  const SensorNames& names_;
  const bool findings_only_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out, const SensorNames& names,
                                                 bool findings_only) {
  return std::make_unique<JsonLinesReport>(out, names, findings_only);
}

}  // namespace sensorvela::tools
