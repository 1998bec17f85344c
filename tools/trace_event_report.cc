#include "tools/trace_event_report.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "tools/trace_event_writer.h"

namespace sensorvela::replay {
namespace {

using Instant = Report::Instant;

constexpr int kEngine = 1;
constexpr int kSensors = 2;

constexpr Track kReporterThread = {kEngine, 1};
constexpr Track kDelivered = {kEngine, 2};
constexpr Track kFailed = {kEngine, 3};
constexpr Track kDropped = {kEngine, 4};
constexpr Track kBlocked = {kEngine, 5};
constexpr Track kNotes = {kEngine, 6};

constexpr Instant kMinute = std::chrono::minutes(1);

Json Arguments(const Cause& cause) {
  Json arguments = {{"queued_at_ns", cause.at.count()}, {"queued_by", cause.what}};
  if (cause.line != 0) arguments["trace_line"] = cause.line;
  return arguments;
}

/// A counter of which only the last value of an instant is written, and no value twice in a row.
class StepCounter {
 public:
  StepCounter(TraceEventWriter& out, int process, std::string name)
      : out_(out), process_(process), name_(std::move(name)) {}

  void Set(Instant at, std::uint64_t value) {
    if (at != at_) Flush();
    at_ = at;
    value_ = value;
  }

  void Flush() {
    if (value_ && value_ != written_) out_.Counter(process_, at_, name_, *value_);
    written_ = value_;
  }

 private:
  TraceEventWriter& out_;
  const int process_;
  const std::string name_;
  Instant at_ = {};
  std::optional<std::uint64_t> value_;
  std::optional<std::uint64_t> written_;
};

/// The track of one sensor.
class SensorTrack {
 public:
  SensorTrack(TraceEventWriter& out, SensorVela::SensorId sensor, int thread)
      : out_(out),
        track_{kSensors, thread},
        name_(std::to_string(sensor.high) + ':' + std::to_string(sensor.low)),
        samples_per_minute_(out, kSensors, "samples per minute " + name_) {
    out_.NameTrack(track_, "sensor " + name_);
  }

  void Enable(Instant at, std::int64_t period_ns) {
    WriteStretch(at);
    enabled_at_ = at;
    period_ns_ = period_ns;
    samples_ = 0;
  }

  void Disable(Instant at) {
    WriteStretch(at);
    out_.Mark(track_, at, "sensor", "disabled", {{"samples_since_enable", samples_}});
  }

  void Sample(Instant at) {
    if (samples_++ == 0) first_sample_at_ = at;
    if (at >= minute_ + kMinute) {
      EndMinute(at);
      minute_ = at - at % kMinute;
    }
    ++samples_in_minute_;
  }

  void Finish(Instant at) {
    WriteStretch(at);
    EndMinute(at);
    samples_per_minute_.Flush();
  }

 private:
  /// A span is written at its end, and what happened in it after it, in the order of time.
  void WriteStretch(Instant at) {
    if (enabled_at_) {
      out_.Span(track_, *enabled_at_, at, "enabled",
                {{"sampling_period_ns", period_ns_}, {"samples", samples_}});
    }
    if (first_sample_at_) {
      out_.Mark(track_, *first_sample_at_, "sensor", "first sample", Json::object());
    }
    enabled_at_.reset();
    first_sample_at_.reset();
  }

  /// The next sample comes at `next`, or the run ends.
  void EndMinute(Instant next) {
    if (samples_in_minute_ == 0) return;
    samples_per_minute_.Set(minute_, std::exchange(samples_in_minute_, 0));
    if (next >= minute_ + kMinute) samples_per_minute_.Set(minute_ + kMinute, 0);
  }

  TraceEventWriter& out_;
  const Track track_;
  const std::string name_;
  StepCounter samples_per_minute_;
  Instant minute_ = {};
  std::uint64_t samples_in_minute_ = 0;
  /// None while the sensor is disabled.
  std::optional<Instant> enabled_at_;
  std::int64_t period_ns_ = 0;
  std::optional<Instant> first_sample_at_;
  std::uint64_t samples_ = 0;
};

class TraceEventReport : public Report {
 public:
  explicit TraceEventReport(std::ostream& out) : out_(out) {
    out_.NameProcess(kEngine, "SensorVela");
    out_.NameTrack(kReporterThread, "reporter thread");
    out_.NameTrack(kDelivered, "atoms delivered");
    out_.NameTrack(kFailed, "atoms failed");
    out_.NameTrack(kDropped, "atoms dropped");
    out_.NameTrack(kBlocked, "errors blocked by the cap");
    out_.NameTrack(kNotes, "notes");
    out_.NameProcess(kSensors, "sensors");
  }

  void AtomQueued(const Cause& cause) override {
    waiting_.push_back(cause);
    queue_length_.Set(cause.at, waiting_.size());
  }

  void Atom(Instant at, const SensorVela::VendorAtom& atom, Answer answer) override {
    Json arguments = NamedValues(atom);
    arguments.update(Arguments(TakeOldest(at)));
    if (answer == Answer::kOk) {
      out_.Mark(kDelivered, at, "delivered", AtomName(atom), arguments);
    } else {
      arguments["answer"] = AnswerName(answer);
      out_.Mark(kFailed, at, "failed", AtomName(atom), arguments);
    }
  }

  void BlockedByCap(Instant at, const Cause& cause, std::string_view text) override {
    out_.Mark(kBlocked, at, "blocked", cause.what, {{"log", text}, {"trace_line", cause.line}});
  }

  void Reporter(Instant at, ReporterStep step) override {
    const bool has_waited = state_ == State::kWaiting;
    LeaveState(at);
    switch (step) {
      case ReporterStep::kWaits:
        state_ = State::kWaiting;
        batch_ = waiting_.size();
        return;
      case ReporterStep::kStarts:
        state_ = State::kAsleep;
        return;
      case ReporterStep::kSends:
      case ReporterStep::kDrops:
        if (!has_waited) batch_ = waiting_.size();
        out_.Span(kReporterThread, at, at, "draining", {{"atoms", batch_}});
        if (step == ReporterStep::kDrops) Drop(at, batch_);
        break;
      case ReporterStep::kUploads:
        out_.Span(kReporterThread, at, at, "uploading diagnostics", Json::object());
        break;
    }
    state_ = State::kAsleep;
  }

  void SensorEnabled(Instant at, SensorVela::SensorId sensor, std::int64_t period_ns) override {
    TrackOf(sensor).Enable(at, period_ns);
  }

  void SensorDisabled(Instant at, SensorVela::SensorId sensor) override {
    TrackOf(sensor).Disable(at);
  }

  void Sample(Instant at, SensorVela::SensorId sensor) override { TrackOf(sensor).Sample(at); }

  void LogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
               std::string_view /*text*/) override {}

  void Note(Instant at, std::string_view text) override {
    out_.Mark(kNotes, at, "note", text, Json::object());
  }

  void Finish(Instant at, const Summary& /*summary*/) override {
    LeaveState(at);
    Drop(at, waiting_.size());
    queue_length_.Flush();
    for (auto& [id, sensor] : sensors_) sensor.Finish(at);
    out_.Finish();
  }

 private:
  enum class State { kNotStarted, kWaiting, kAsleep };

  /// Writes what the reporter thread has done since its last step.
  void LeaveState(Instant at) {
    if (state_ == State::kWaiting) {
      out_.Span(kReporterThread, since_, at, "waiting for the service", {{"atoms", batch_}});
    } else if (state_ == State::kAsleep && at > since_) {
      out_.Span(kReporterThread, since_, at, "sleeping", Json::object());
    }
    since_ = at;
  }

  Cause TakeOldest(Instant at) {
    const Cause cause = waiting_.front();
    waiting_.pop_front();
    queue_length_.Set(at, waiting_.size());
    return cause;
  }

  void Drop(Instant at, std::size_t atoms) {
    for (std::size_t i = 0; i < atoms; ++i) {
      const Cause cause = TakeOldest(at);
      out_.Mark(kDropped, at, "dropped", cause.what, Arguments(cause));
    }
  }

  SensorTrack& TrackOf(SensorVela::SensorId sensor) {
    const int thread = static_cast<int>(sensors_.size()) + 1;
    return sensors_.try_emplace({sensor.high, sensor.low}, out_, sensor, thread).first->second;
  }

  TraceEventWriter out_;

  State state_ = State::kNotStarted;
  Instant since_ = {};
  /// How many atoms the reporter thread holds while it waits.
  std::size_t batch_ = 0;

  std::deque<Cause> waiting_;
  StepCounter queue_length_{out_, kEngine, "atoms waiting"};

  std::map<std::pair<std::uint32_t, std::int32_t>, SensorTrack> sensors_;
};

}  // namespace

std::unique_ptr<Report> MakeTraceEventReport(std::ostream& out) {
  return std::make_unique<TraceEventReport>(out);
}

}  // namespace sensorvela::replay
