#include "tools/viewer/viewer_observer.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/text/names.h"
#include "tools/viewer/sensor_track.h"
#include "tools/viewer/step_counter.h"
#include "tools/viewer/viewer_writer.h"

namespace sensorvela::replay {
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

Json QueuedBy(const Cause& cause) {
  Json arguments = {{"queued_at_ns", cause.at.count()}, {"queued_by", cause.what}};
  if (cause.line.number != 0) arguments["trace_line"] = cause.line.number;
  return arguments;
}

/// Adds the event's own fields, for a mark without an atom.
void AddEvent(TraceLine line, Json& arguments) {
  if (line.number == 0) return;
  Json fields = Json::parse(line.text);
  fields.erase("at_ns");
  fields.erase("event");
  arguments["event"] = std::move(fields);
}

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

  void OnAtomQueued(const Cause& cause) override { queue_length_.Set(cause.at, ++waiting_); }

  void OnAtomReported(Instant at, const SensorVela::VendorAtom& atom, Answer answer,
                      const Cause& cause) override {
    queue_length_.Set(at, --waiting_);
    Json arguments = {{"atom_id", atom.atomId}};
    if (!atom.reverseDomainName.empty()) arguments["domain"] = atom.reverseDomainName;
    arguments.update(NamedValues(atom));
    arguments.update(QueuedBy(cause));
    if (answer == Answer::kOk) {
      out_.Mark(kDelivered, at, "delivered", testkit::AtomName(atom), arguments);
    } else {
      arguments["answer"] = AnswerName(answer);
      out_.Mark(kFailed, at, "failed", testkit::AtomName(atom), arguments);
    }
  }

  void OnAtomDropped(Instant at, const Cause& cause) override {
    queue_length_.Set(at, --waiting_);
    Json arguments = QueuedBy(cause);
    AddEvent(cause.line, arguments);
    const std::string name =
        cause.atom_id == 0 ? std::string(cause.what) : testkit::AtomName(cause.atom_id);
    out_.Mark(kDropped, at, "dropped", name, arguments);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view text) override {
    Json arguments = {{"log", text}, {"trace_line", cause.line.number}};
    AddEvent(cause.line, arguments);
    out_.Mark(kBlocked, at, "blocked", cause.what, arguments);
  }

  void OnReporterStep(Instant at, ReporterStep step, std::size_t batch) override {
    LeaveState(at);
    switch (step) {
      case ReporterStep::kWaits:
        state_ = State::kWaiting;
        batch_ = batch;
        return;
      case ReporterStep::kStarts:
        state_ = State::kAsleep;
        return;
      case ReporterStep::kSends:
      case ReporterStep::kDrops:
        out_.Span(kReporterThread, at, at, step == ReporterStep::kSends ? "draining" : "dropping",
                  {{"atoms", batch}});
        break;
      case ReporterStep::kUploads:
        out_.Span(kReporterThread, at, at, "uploading diagnostics", Json::object());
        break;
    }
    state_ = State::kAsleep;
  }

  void OnSensorEnabled(Instant at, SensorVela::SensorId sensor, std::int64_t period_ns) override {
    TrackOf(sensor).Enable(at, period_ns);
  }

  void OnSensorDisabled(Instant at, SensorVela::SensorId sensor) override {
    TrackOf(sensor).Disable(at);
  }

  void OnSample(Instant at, SensorVela::SensorId sensor, std::int64_t /*timestamp_ns*/) override {
    TrackOf(sensor).Sample(at);
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    out_.Span(kSuspended, at, at + duration, "suspended", Json::object());
  }

  void OnNote(Instant at, std::string_view text) override {
    out_.Mark(kNotes, at, "note", text, Json::object());
  }

  void OnRunEnd(Instant at, const Summary& /*summary*/) override {
    LeaveState(at);
    queue_length_.Flush();
    for (auto& [id, sensor] : sensors_) sensor.Finish(at);
    out_.Finish();
  }

 private:
  enum class State { kNotStarted, kWaiting, kAsleep };

  /// Writes the span of the state that the reporter thread leaves at `at`.
  void LeaveState(Instant at) {
    if (state_ == State::kWaiting) {
      out_.Span(kReporterThread, since_, at, "waiting for the service", {{"atoms", batch_}});
    } else if (state_ == State::kAsleep && at > since_) {
      out_.Span(kReporterThread, since_, at, "sleeping", Json::object());
    }
    since_ = at;
  }

  SensorTrack& TrackOf(SensorVela::SensorId sensor) {
    const Track next = {kSensors, static_cast<int>(sensors_.size()) + 1};
    return sensors_.try_emplace({sensor.high, sensor.low}, out_, names_.Label(sensor), next)
        .first->second;
  }

  ViewerWriter out_;
  const SensorNames& names_;

  State state_ = State::kNotStarted;
  Instant since_ = {};
  /// How many atoms the reporter thread holds while it waits.
  std::size_t batch_ = 0;

  std::size_t waiting_ = 0;
  StepCounter queue_length_{out_, kEngine, "atoms waiting"};

  std::map<std::pair<std::uint32_t, std::int32_t>, SensorTrack> sensors_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeViewerObserver(std::ostream& out, const SensorNames& names) {
  return std::make_unique<ViewerObserver>(out, names);
}

}  // namespace sensorvela::replay
