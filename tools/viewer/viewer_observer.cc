#include "tools/viewer/viewer_observer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/text/names.h"
#include "tools/text/sensor_order.h"
#include "tools/viewer/counters.h"
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
constexpr Track kAway = {kEngine, 8};

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
    out_.NameTrack(kAway, "stats service away");
    out_.NameProcess(kSensors, "sensors");
  }

  void OnQueueLength(Instant at, std::size_t atoms) override { queue_length_.Set(at, atoms); }

  void OnAtom(Instant at, const AtomFact& fact) override {
    Json arguments = Json::object();
    if (fact.dropped) {
      arguments["why"] = WordOf(*fact.dropped);
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
    if (fact.fate != BufferFate::kTaken) {
      out_.Mark(kDropped, at, CaptionOf(fact.fate), fact.name, arguments);
    } else if (fact.answer == testkit::Answer::kOk) {
      out_.Mark(kDelivered, at, "delivered", fact.name, arguments);
    } else if (fact.answer) {
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
    const bool for_process = state == ReporterState::kWaitingForProcess;
    if (state != ReporterState::kWaiting && !for_process) return;
    out_.Span(kReporterThread, from, to,
              for_process ? "waiting for the service's process" : "waiting for the service",
              {{"atoms", atoms}});
  }

  // A sensor has its track from its first event on, which need not be a sample.
  void OnSensorEnabled(Instant /*at*/, SensorVela::SensorId sensor) override { SensorOf(sensor); }

  void OnSensorDisabled(Instant at, SensorVela::SensorId sensor,
                        std::uint64_t samples_since_enable) override {
    out_.Mark(SensorOf(sensor).track, at, "sensor", "disabled",
              {{"samples_since_enable", samples_since_enable}});
  }

  // The span and then the first sample in it: in the order of their starts.
  void OnSensorSpan(SensorVela::SensorId sensor, const SensorSpan& span) override {
    const Track track = SensorOf(sensor).track;
    if (span.enabled_at) {
      out_.Span(track, *span.enabled_at, span.end, "enabled",
                {{"sampling_period_ns", span.period_ns}, {"samples", span.samples}});
    }
    if (span.first_sample) {
      out_.Mark(track, span.first_sample->at, "sensor", "first sample", Json::object());
    }
  }

  void OnSample(Instant at, SensorVela::SensorId sensor, const SampleFact& /*sample*/) override {
    SensorOf(sensor).samples_per_minute.Count(at);
  }

  void OnOutage(const Outage& outage) override {
    out_.Span(kAway, outage.from, outage.to, "service away", {{"why", WordOf(outage.reason)}});
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
      if (sensor.last_span) OnSensorSpan(sensor.sensor, *sensor.last_span);
      SensorOf(sensor.sensor).samples_per_minute.Finish(at);
    }
    out_.Finish();
  }

 private:
  struct Sensor {
    Track track;
    MinuteCounter samples_per_minute;
  };

  Sensor& SensorOf(SensorVela::SensorId id) {
    const auto found = sensors_.find(id);
    if (found != sensors_.end()) return found->second;
    const std::string label = names_.Label(id);
    const Track track = {kSensors, static_cast<int>(sensors_.size()) + 1};
    out_.NameTrack(track, label);
    const MinuteCounter counter(out_, kSensors, label + ": samples per minute");
    return sensors_.emplace(id, Sensor{track, counter}).first->second;
  }

  ViewerWriter out_;
  const SensorNames& names_;

  StepCounter queue_length_{out_, kEngine, "atoms waiting"};

  std::map<SensorVela::SensorId, Sensor, SensorOrder> sensors_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeViewerObserver(std::ostream& out, const SensorNames& names) {
  return std::make_unique<ViewerObserver>(out, names);
}

}  // namespace sensorvela::tools
