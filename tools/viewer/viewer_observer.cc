#include "tools/viewer/viewer_observer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include <sensorvela/testkit/stats_service.h>

#include "tools/text/names.h"
#include "tools/text/sensor_order.h"
#include "tools/viewer/sensor_track.h"
#include "tools/viewer/step_counter.h"
#include "tools/viewer/viewer_writer.h"

namespace sensorvela::tools {
namespace {

constexpr int kEngine = 1;
constexpr int kSensors = 2;

constexpr Track kReporterThread = {kEngine, 1};
constexpr Track kDelivered = {kEngine, 2};
constexpr Track kFailed = {kEngine, 3};
constexpr Track kDropped = {kEngine, 4};
constexpr Track kBlocked = {kEngine, 5};
constexpr Track kNotes = {kEngine, 6};
constexpr Track kSuspended = {kEngine, 7};

class ViewerObserver : public RunObserver {
 public:
  ViewerObserver(std::ostream& out, const SensorNames& names) : out_(out), names_(names) {
    out_.NameProcess(kEngine, "SensorVela");
    out_.NameTrack(kReporterThread, "reporter thread");
    out_.NameTrack(kDelivered, "atoms delivered");
    out_.NameTrack(kFailed, "atoms failed");
    out_.NameTrack(kDropped, "atoms dropped");
    out_.NameTrack(kBlocked, "errors blocked by the cap");
    out_.NameTrack(kNotes, "notes");
    out_.NameTrack(kSuspended, "device suspended");
    out_.NameProcess(kSensors, "sensors");
  }

  void OnQueueLength(Instant at, std::size_t atoms) override { queue_length_.Set(at, atoms); }

  void OnAtom(Instant at, const AtomFact& fact) override {
    Json arguments = Json::object();
    if (fact.atom == nullptr) {
      arguments.update(ToJson(fact.cause));
      // In the place of the values that the atom would have had.
      if (fact.cause.event) arguments["event"] = fact.cause.event->fields;
      const std::string name = fact.name.empty() ? std::string(fact.cause.what()) : fact.name;
      out_.Mark(kDropped, at, "dropped", name, arguments);
      return;
    }
    arguments["atom_id"] = fact.atom->atomId;
    if (!fact.atom->reverseDomainName.empty()) arguments["domain"] = fact.atom->reverseDomainName;
    arguments.update(NamedValues(*fact.atom));
    arguments.update(ToJson(fact.cause));
    if (*fact.answer == testkit::Answer::kOk) {
      out_.Mark(kDelivered, at, "delivered", fact.name, arguments);
    } else {
      arguments["answer"] = AnswerName(*fact.answer);
      out_.Mark(kFailed, at, "failed", fact.name, arguments);
    }
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    out_.Mark(kBlocked, at, "blocked", cause.what(),
              {{"log", text}, {"trace_line", cause.line()}, {"event", cause.event->fields}});
  }

  void OnReporterStep(Instant at, ReporterStep step, std::size_t atoms) override {
    if (step == ReporterStep::kUploads) {
      out_.Span(kReporterThread, at, at, "uploading diagnostics", Json::object());
    } else {
      out_.Span(kReporterThread, at, at, step == ReporterStep::kSends ? "draining" : "dropping",
                {{"atoms", atoms}});
    }
  }

  void OnReporterSlept(Instant from, Instant to) override {
    out_.Span(kReporterThread, from, to, "sleeping", Json::object());
  }

  void OnReporterStay(Instant from, Instant to, ReporterState state, std::size_t atoms) override {
    if (state != ReporterState::kWaiting) return;
    out_.Span(kReporterThread, from, to, "waiting for the service", {{"atoms", atoms}});
  }

  // A sensor has its track from its first event on, which need not be a sample.
  void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId sensor) override { TrackOf(sensor); }

  void OnSensorDisabled(Instant at, SensorVela::SensorId sensor,
                        std::uint64_t samples_since_enable) override {
    TrackOf(sensor).Disable(at, samples_since_enable);
  }

  void OnSensorSpan(SensorVela::SensorId sensor, const SensorSpan& span) override {
    TrackOf(sensor).WriteSpan(span);
  }

  void OnSample(Instant at, SensorVela::SensorId sensor, const SampleFact& /*sample*/) override {
    TrackOf(sensor).Sample(at);
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    out_.Span(kSuspended, at, at + duration, "suspended", Json::object());
  }

  void OnNote(Instant at, std::string_view text) override {
    out_.Mark(kNotes, at, "note", text, Json::object());
  }

  void OnRunEnd(Instant at, const Summary& summary) override {
    queue_length_.Flush();
    for (const SensorSummary& sensor : summary.sensors) {
      SensorTrack& track = TrackOf(sensor.sensor);
      if (sensor.last_span) track.WriteSpan(*sensor.last_span);
      track.Finish(at);
    }
    out_.Finish();
  }

 private:
  SensorTrack& TrackOf(SensorVela::SensorId sensor) {
    const auto found = sensors_.find(sensor);
    if (found != sensors_.end()) return found->second;
    const Track next = {kSensors, static_cast<int>(sensors_.size()) + 1};
    return sensors_.try_emplace(sensor, out_, names_.Label(sensor), next).first->second;
  }

  ViewerWriter out_;
  const SensorNames& names_;

  StepCounter queue_length_{out_, kEngine, "atoms waiting"};

  std::map<SensorVela::SensorId, SensorTrack, SensorOrder> sensors_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeViewerObserver(std::ostream& out, const SensorNames& names) {
  return std::make_unique<ViewerObserver>(out, names);
}

}  // namespace sensorvela::tools
