#include "tools/report/json_lines_report.h"

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/report/selection.h"
#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtom;

class JsonLinesReport : public RunObserver {
 public:
  JsonLinesReport(std::ostream& out, const SensorNames& names) : out_(out), names_(names) {
    Line({{"kind", "replay"}, {"version", 1}});
  }

  void OnAtomReported(Instant at, const VendorAtom& atom, Answer answer,
                      const Cause& cause) override {
    Json object = {{"kind", "atom"},
                   {"at_ns", at.count()},
                   {"answer", AnswerName(answer)},
                   {"atom_id", atom.atomId},
                   {"name", testkit::AtomName(atom)}};
    if (!atom.reverseDomainName.empty()) object["domain"] = atom.reverseDomainName;
    if (const auto sensor = SensorOf(atom)) AddName(*sensor, object);
    if (answer != Answer::kOk) AddCause(cause, object);
    object["values"] = NamedValues(atom);
    Line(object);
  }

  void OnAtomDropped(Instant at, const Cause& cause) override {
    Json object = {{"kind", "dropped"}, {"at_ns", at.count()}};
    if (cause.atom_id != 0) {
      object["atom_id"] = cause.atom_id;
      object["name"] = testkit::AtomName(cause.atom_id);
    }
    AddSensor(cause.line, object);
    AddCause(cause, object);
    Line(object);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    Json object = {{"kind", "blocked"}, {"at_ns", at.count()}, {"event", cause.what}};
    AddSensor(cause.line, object);
    object["trace_line"] = cause.line.number;
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
    Json object = {{"kind", "sensor"},
                   {"sensor_high", summary.sensor.high},
                   {"sensor_low", summary.sensor.low}};
    AddName(summary.sensor, object);
    object["samples"] = summary.delivered;
    object["reported_samples"] = summary.reported.samples;
    object["not_reported_samples"] = summary.NotReported();
    object["late_samples"] = summary.reported.late;
    object["latency_histogram"] = summary.reported.bands;
    Line(object);
  }

  static void AddCause(const Cause& cause, Json& object) {
    object["queued_at_ns"] = cause.at.count();
    object["queued_by"] = cause.what;
    if (cause.line.number != 0) object["trace_line"] = cause.line.number;
  }

  /// Adds the sensor that the event names.
  void AddSensor(TraceLine line, Json& object) {
    const auto sensor = event_sensor_.Of(line);
    if (!sensor) return;
    object["sensor_high"] = sensor->high;
    object["sensor_low"] = sensor->low;
    AddName(*sensor, object);
  }

  void AddName(SensorVela::SensorId sensor, Json& object) const {
    const std::string_view name = names_.NameOf(sensor);
    if (!name.empty()) object["sensor_name"] = name;
  }

  void Line(const Json& object) { out_ << Dump(object, false) << '\n'; }

  std::ostream& out_;
  const SensorNames& names_;
  EventSensor event_sensor_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out, const SensorNames& names) {
  return std::make_unique<JsonLinesReport>(out, names);
}

}  // namespace sensorvela::replay
