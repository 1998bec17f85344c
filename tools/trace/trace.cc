#include "tools/trace/trace.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/input/line_reader.h"
#include "tools/text/printable_text.h"
#include "tools/trace/field_reader.h"
#include "tools/trace/json_line.h"
#include "trace_format/words.h"

namespace sensorvela::tools {
namespace {

std::string DisplayName(const std::string& path) {
  return path == "-" ? "<stdin>" : Printable(path);
}

[[noreturn]] void ThrowUnreadable(const std::string& name, const std::system_error& error) {
  throw TraceError(name + ": " + error.code().message() + ": expected a readable file");
}

bool IsBlank(std::string_view line) {
  return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

/// The line's fields but for those that every event has.
Json OwnFields(const JsonValue& line) {
  Json fields = ToJson(line);
  fields.erase(trace_format::field::kAtNs);
  fields.erase(trace_format::field::kEvent);
  return fields;
}

/// Reads and checks a trace once, from the first event to the last.
class TracePass {
 public:
  /// A pass after the first ends where that did, and knows the `whole` trace's plan.
  TracePass(std::string name, Input input, const TracePlan* whole = nullptr,
            bool with_fields = false)
      : name_(std::move(name)),
        lines_(std::move(input)),
        whole_(whole),
        with_fields_(with_fields) {}

  /// Returns false, and checks the trace as a whole, at its end.
  bool Next(Event& event) try {
    // A recording that is still written has grown since the first pass.
    while ((whole_ == nullptr || lines_.number() < whole_->last_line) && lines_.Next()) {
      if (lines_.end() == LineEnd::kTooLong) {
        throw EventError("a line of more than " + std::to_string(kMaxLineBytes) +
                         " bytes: expected one event a line");
      }
      // The last line of a recording that has no end is whole if it ends with a newline.
      if (MayBeCut() && lines_.end() != LineEnd::kNewline) break;
      lacks_trailer_ = plan_.is_recording && end_line_ != 0 && lines_.end() == LineEnd::kCut &&
                       lines_.line().empty();
      if (lacks_trailer_) break;
      CheckEnd();
      if (IsBlank(lines_.line())) continue;
      Parse(event);
      return true;
    }
    if (plan_.last_line == 0) throw EventError("the trace is empty: expected one event a line");
    if (engine_line_ == 0) throw EventError("the trace ends here: expected an engine_start in it");
    return false;
  } catch (const EventError& error) {
    const std::size_t line_number = std::max<std::size_t>(lines_.number(), 1);
    if (MayBeCut() && IsDamagedFurtherOn()) return false;
    throw TraceError(name_ + ":" + std::to_string(line_number) + ": " + error.what());
  } catch (const std::system_error& error) {
    ThrowUnreadable(name_, error);
  }

  std::uint64_t bytes_read() const { return lines_.bytes_read(); }

  /// What the events so far determine.
  const TracePlan& plan() const { return plan_; }

  /// Where a recording has been cut; empty for other traces.
  std::string Cut() const {
    if (!MayBeCut() && !lacks_trailer_) return "";
    return name_ + ":" + std::to_string(plan_.last_line) +
           ": the recording was cut after this line";
  }

 private:
  /// A recording that has not come to its end.
  bool MayBeCut() const { return plan_.is_recording && end_line_ == 0; }

  /// Turns the present line into an event.
  void Parse(Event& event) {
    const JsonValue& line = json_.Parse(lines_.line());
    FieldReader fields(line);
    const EventKind& kind = FindEventKind(fields.Text(trace_format::field::kEvent));
    const auto at_ns =
        fields.Integer<std::int64_t>(trace_format::field::kAtNs, 0, trace_format::kMaxTimeNs);
    const RecordingPlan* const recording = whole_ != nullptr ? &whole_->recording : nullptr;
    EventContent content = kind.read(fields, {at_ns, plan_.supplier, recording});
    fields.RejectOtherFields();
    CheckTime(at_ns);
    CheckPlace(kind);
    AddToPlan(kind, at_ns, content);
    event.at = std::chrono::nanoseconds(at_ns);
    event.action = std::move(content.action);
    if (whole_ == nullptr) return;
    event.info = std::make_shared<EventInfo>(
        EventInfo{.kind = kind.name,
                  .line = lines_.number(),
                  .atom_id = content.atom_id != 0 ? content.atom_id : kind.atom_id,
                  .sensor = fields.sensor(),
                  .fields = with_fields_ ? OwnFields(line) : Json()});
  }

  void CheckTime(std::int64_t at_ns) {
    const auto last_line = [&] { return "line " + std::to_string(plan_.last_line); };
    if (at_ns < last_at_ns_) {
      throw EventError("time goes back from " + std::to_string(last_at_ns_) + " (" + last_line() +
                       ") to " + std::to_string(at_ns) + ": expected no earlier instant");
    }
    if (at_ns < last_over_at_ns_) {
      throw EventError("an event at " + std::to_string(at_ns) +
                       (last_place_ == Place::kInRecording
                            ? ", before the last sample of " + last_line()
                            : ", while the device is suspended (" + last_line() + ")") +
                       ": expected none before " + std::to_string(last_over_at_ns_));
    }
    last_at_ns_ = at_ns;
    plan_.last_line = lines_.number();
  }

  void CheckPlace(const EventKind& kind) {
    const std::string name(kind.name);
    if (end_line_ != 0) {
      throw EventError(name + " after the end (line " + std::to_string(end_line_) +
                       "): expected end to be the last event");
    }
    if (kind.place == Place::kStartsRecording && plan_.run_begin.count() >= 0) {
      throw EventError("a " + name + " here: expected it as the first event or not at all");
    }
    if (kind.place == Place::kInRecording && !plan_.is_recording) {
      throw EventError(name +
                       " in a trace that is no recording: expected recording as the first event");
    }
    const bool needs_engine =
        kind.place == Place::kNeedsEngine || kind.place == Place::kInRecording;
    if (needs_engine && engine_line_ == 0) {
      throw EventError(name + " without an engine: expected an engine_start before it");
    }
    if (kind.place == Place::kStartsEngine && engine_line_ != 0) {
      throw EventError("a second " + name + " (the first: line " + std::to_string(engine_line_) +
                       "): expected one");
    }
    if (kind.place == Place::kStartsRecording) plan_.is_recording = true;
    if (kind.place == Place::kStartsEngine) engine_line_ = lines_.number();
    if (kind.place == Place::kLast) end_line_ = lines_.number();
  }

  /// Adds a checked event.
  void AddToPlan(const EventKind& kind, std::int64_t at_ns, const EventContent& content) {
    last_place_ = kind.place;
    last_over_at_ns_ = at_ns + content.lasts_ns;
    const std::chrono::nanoseconds at(at_ns);
    if (plan_.run_begin.count() < 0) plan_.run_begin = at;
    const std::chrono::nanoseconds done(at_ns + std::max(content.lasts_ns, content.train_ns));
    plan_.run_end = kind.place == Place::kLast ? at : std::max(plan_.run_end, done);
    if (content.plan) content.plan(plan_);
  }

  /// Where gzip data is damaged, it can give some lines of rubbish before that is noticed.
  bool IsDamagedFurtherOn() {
    while (lines_.Next()) continue;
    return lines_.end() == LineEnd::kCut || lines_.end() == LineEnd::kDamaged;
  }

  /// Rejects what is left of a line where the input broke off.
  void CheckEnd() const {
    const LineEnd end = lines_.end();
    if (end == LineEnd::kCut) {
      throw EventError("the gzip data ends too early: expected all of a gzip file");
    }
    if (end == LineEnd::kDamaged) {
      throw EventError("the gzip data is damaged: expected an undamaged gzip file");
    }
  }

  std::string name_;
  LineReader lines_;
  JsonLine json_;
  /// Null in the first pass.
  const TracePlan* const whole_;
  const bool with_fields_;

  TracePlan plan_;
  // Of the last event: its instant, when it is over, and its place.
  std::int64_t last_at_ns_ = 0;
  std::int64_t last_over_at_ns_ = 0;
  Place last_place_ = Place::kAnywhere;
  // Line numbers; 0 while there is no such line.
  std::size_t engine_line_ = 0;
  std::size_t end_line_ = 0;
  /// The gzip data ends after the end, but without what tells that it is whole.
  bool lacks_trailer_ = false;
};

}  // namespace

Input OpenTrace(const std::string& path) try {
  return Input::Open(path);
} catch (const std::system_error& error) {
  ThrowUnreadable(DisplayName(path), error);
}

Trace::Trace(const std::string& path, Input input, const OnLine& on_line)
    : name_(DisplayName(path)), input_(std::move(input)) {
  TracePass pass(name_, input_);
  for (Event event; pass.Next(event);) {
    if (on_line) on_line(pass.bytes_read());
  }
  plan_ = pass.plan();
  cut_ = pass.Cut();
}

EventSource Trace::Events(bool with_fields) const {
  auto pass = std::make_shared<TracePass>(name_, input_, &plan_, with_fields);
  return [pass = std::move(pass)](Event& event) { return pass->Next(event); };
}

}  // namespace sensorvela::tools
