#include "tools/report/text_report.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/report/latency_bars.h"
#include "tools/report/repeat_folder.h"
#include "tools/report/sensor_table.h"
#include "tools/report/value_text.h"
#include "tools/text/atom_json.h"
#include "tools/text/clock_time.h"
#include "tools/text/printable_text.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using Look = ReportLine::Look;

/// The columns of a line's instant, and of a broken line's further parts.
constexpr std::size_t kTimeWidth = 20;
constexpr std::size_t kMarkWidth = 11;
// Wide enough for the names of the event atoms; the few longer names exceed it.
constexpr std::size_t kAtomWidth = 37;
/// What a line has beside its instant, however narrow the terminal is.
constexpr std::size_t kMinTextWidth = 20;

std::string Padded(std::string text, std::size_t width) {
  text += "  ";
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string Mark(Answer answer) {
  switch (answer) {
    case Answer::kOk:
      return "atom";
    case Answer::kError:
      return "FAILED";
    case Answer::kNoStatus:
      return "NO STATUS";
  }
  return "?";
}

/// The log line without the count that each error past the cap has of its own.
std::string WithoutCount(std::string text) {
  constexpr std::string_view kBefore = "has occurred [";
  const std::size_t before = text.find(kBefore);
  if (before == std::string::npos) return text;
  const std::size_t count = before + kBefore.size();
  return text.erase(count, text.find(']', count) - count);
}

/// The sensor that an event of a trace names.
std::optional<SensorVela::SensorId> SensorOf(TraceLine line) {
  if (line.number == 0) return std::nullopt;
  const Json event = Json::parse(line.text);
  if (!event.contains("sensor_high")) return std::nullopt;
  return SensorVela::SensorId{event.at("sensor_high").get<std::uint32_t>(),
                              event.at("sensor_low").get<std::int32_t>()};
}

class TextReport : public RunObserver {
 public:
  TextReport(std::ostream& out, const SensorNames& names, TextOptions options)
      : out_(out), names_(names), options_(std::move(options)) {}

  void OnAtomReported(Instant at, const VendorAtom& atom, Answer answer) override {
    if (!options_.only.Has(atom)) return;
    std::string name = testkit::AtomName(atom);
    if (testkit::FindAtom(atom.atomId) != nullptr) name += " (" + std::to_string(atom.atomId) + ")";
    const std::string text = Padded(Mark(answer), kMarkWidth) +
                             Padded(name, options_.wide ? kAtomWidth : 0) +
                             (options_.wide ? AllValues(atom, names_) : FoldedValues(atom, names_));
    Line({.at = at,
          .text = text.substr(0, text.find_last_not_of(' ') + 1),
          .look = answer == Answer::kOk ? Look::kPlain : Look::kLoss,
          .may_be_cut = true});
  }

  void OnAtomDropped(Instant at, const Cause& cause) override {
    if (options_.summary_only) return;
    const auto sensor = SensorOf(cause.line);
    if (!options_.only.HasLost(sensor)) return;
    Line({.at = at,
          .text = Padded("DROPPED", kMarkWidth) + What(cause, sensor) + ", queued at " +
                  ExactClockTime(cause.at) + LineNumber(cause),
          .look = Look::kLoss});
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view /*text*/) override {
    if (options_.summary_only) return;
    // An event can be blocked a million times.
    if (cause.line.number != blocked_line_) blocked_sensor_ = SensorOf(cause.line);
    blocked_line_ = cause.line.number;
    if (!options_.only.HasLost(blocked_sensor_)) return;
    Line({.at = at,
          .text = Padded("BLOCKED", kMarkWidth) + What(cause, blocked_sensor_) + ", past the cap" +
                  LineNumber(cause),
          .look = Look::kWarning});
  }

  void OnLogLine(Instant at, int priority, std::string_view tag, std::string_view text) override {
    if (options_.only.is_limited()) return;
    const std::string mark =
        Padded("log", kMarkWidth) + std::string(PriorityLetter(priority)) + ' ' + Printable(tag);
    Line({.at = at,
          .text = mark + ": " + Printable(text),
          .key = mark + ": " + WithoutCount(std::string(text))});
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    if (options_.only.is_limited()) return;
    Line({.at = at,
          .text = Padded("suspended", kMarkWidth) + "until " + ExactClockTime(at + duration)});
  }

  void OnNote(Instant at, std::string_view text) override {
    if (options_.only.is_limited()) return;
    Line({.at = at, .text = "# " + Printable(text)});
  }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    folder_.Flush();
    std::vector<SensorSummary> sensors = summary.sensors;
    std::erase_if(sensors, [&](const SensorSummary& sensor) {
      return !options_.only.Summarizes(sensor.sensor);
    });
    if (!options_.summary_only) out_ << '\n';
    if (!sensors.empty()) {
      out_ << "Samples by latency, as the engine's reports say\n";
      if (options_.wide || options_.summary_only) {
        for (const SensorSummary& sensor : sensors) Bars(sensor);
      } else {
        for (const std::string& row : SensorTable(sensors, names_)) out_ << Broken(row, 2);
      }
    }
    if (!sensors.empty()) out_ << '\n';
    Counts(summary);
  }

 private:
  std::string What(const Cause& cause, const std::optional<SensorVela::SensorId>& sensor) const {
    return std::string(cause.what) + (sensor ? " of " + names_.Label(*sensor) : "");
  }

  static std::string LineNumber(const Cause& cause) {
    return cause.line.number == 0 ? "" : ", line " + std::to_string(cause.line.number);
  }

  void Line(ReportLine line) {
    if (options_.summary_only) return;
    if (options_.wide) {
      Print(line);
    } else {
      folder_.Add(std::move(line));
    }
  }

  void Print(const ReportLine& line) {
    const bool has_color = options_.color && line.look != Look::kPlain;
    if (has_color) out_ << (line.look == Look::kLoss ? "\x1b[31m" : "\x1b[33m");
    const std::string text = line.may_be_cut ? Cut(line.text, line.count.size()) : line.text;
    std::string lines = Broken(text + line.count, kTimeWidth, kTimeWidth);
    if (has_color) lines.insert(lines.size() - 1, "\x1b[0m");
    out_ << ExactClockTime(line.at) << "  " << lines;
  }

  /// The text, without its last words if it would not fit one line of 120 columns, or of the width
  /// if that is more, together with `more` characters.
  std::string Cut(const std::string& text, std::size_t more) const {
    constexpr std::string_view kMark = " ...";
    const std::size_t room = std::max(options_.width, TextOptions().width) - kTimeWidth - more;
    if (options_.wide || Columns(text) <= room) return text;
    return text.substr(0, text.rfind(' ', room - kMark.size())) + std::string(kMark);
  }

  /// The text in lines of the width. The first begins after `taken` columns.
  std::string Broken(const std::string& text, std::size_t indent, std::size_t taken = 0) const {
    if (options_.wide) return text + '\n';
    return Wrapped(text, std::max(options_.width, indent + kMinTextWidth), indent, taken);
  }

  void Bars(const SensorSummary& summary) {
    const ReportedSamples& reported = summary.reported;
    const std::string counts = std::to_string(summary.delivered) + " samples, " +
                               std::to_string(reported.samples) + " reported, " +
                               std::to_string(summary.NotReported()) + " not reported, " +
                               std::to_string(reported.late) + " late";
    out_ << '\n' << Broken(names_.Label(summary.sensor) + ": " + counts, 2);
    out_ << LatencyBars(reported, options_.wide ? 0 : options_.width);
  }

  void Counts(const Summary& summary) {
    Count("delivered", summary.delivered, "atoms that the stats service took");
    Count("failed", summary.failed, "atoms whose report failed or ended without a status");
    Count("dropped", summary.dropped, "atoms queued that never reached it");
    Count("blocked by the cap", summary.blocked_by_cap,
          "errors past the 10 of a kind that a cycle allows");
    if (summary.cycles_ended) {
      Count("cycles ended", *summary.cycles_ended, "");
    } else {
      out_ << Broken("cycles ended                -  unknown: there is no diagnostics supplier",
                     31);
    }
  }

  void Count(const char* what, std::uint64_t count, const char* meaning) {
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "%-18s %10llu%s%s", what,
                  static_cast<unsigned long long>(count), *meaning == '\0' ? "" : "  ", meaning);
    out_ << Broken(line.data(), 31);
  }

  std::ostream& out_;
  const SensorNames& names_;
  const TextOptions options_;
  RepeatFolder folder_{[this](const ReportLine& line) { Print(line); }};
  /// The line of the last blocked error, and the sensor in it.
  std::size_t blocked_line_ = 0;
  std::optional<SensorVela::SensorId> blocked_sensor_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out, const SensorNames& names,
                                            TextOptions options) {
  return std::make_unique<TextReport>(out, names, std::move(options));
}

}  // namespace sensorvela::replay
