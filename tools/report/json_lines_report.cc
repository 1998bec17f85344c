#include "tools/report/json_lines_report.h"

#include <chrono>
#include <string>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/text/atom_json.h"
#include "tools/text/names.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtom;

class JsonLinesReport : public RunObserver {
 public:
  explicit JsonLinesReport(std::ostream& out) : out_(out) {}

  void OnAtomReported(Instant at, const VendorAtom& atom, Answer answer) override {
    Json object = {{"kind", "atom"},
                   {"at_ns", at.count()},
                   {"answer", AnswerName(answer)},
                   {"atom_id", atom.atomId},
                   {"name", testkit::AtomName(atom)}};
    if (!atom.reverseDomainName.empty()) object["domain"] = atom.reverseDomainName;
    object["values"] = NamedValues(atom);
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
    for (const SensorSummary& sensor : summary.sensors) {
      Line({{"kind", "sensor"},
            {"sensor_high", sensor.sensor.high},
            {"sensor_low", sensor.sensor.low},
            {"samples", sensor.delivered},
            {"reported_samples", sensor.reported.samples},
            {"not_reported_samples", sensor.NotReported()},
            {"late_samples", sensor.reported.late},
            {"latency_histogram", sensor.reported.bands}});
    }
    Line({{"kind", "summary"},
          {"delivered", summary.delivered},
          {"failed", summary.failed},
          {"dropped", summary.dropped},
          {"blocked_by_cap", summary.blocked_by_cap},
          {"cycles_ended", summary.cycles_ended ? Json(*summary.cycles_ended) : Json()}});
  }

 private:
  void Line(const Json& object) { out_ << Dump(object, false) << '\n'; }

  std::ostream& out_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeJsonLinesReport(std::ostream& out) {
  return std::make_unique<JsonLinesReport>(out);
}

}  // namespace sensorvela::replay
