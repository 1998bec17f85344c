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
#include <sensorvela/testkit/stats_service.h>

#include "tools/facts/captions.h"
#include "tools/report/finding_text.h"
#include "tools/report/repeat_folder.h"
#include "tools/report/samples_by_latency.h"
#include "tools/report/value_text.h"
#include "tools/text/atom_json.h"
#include "tools/text/clock_time.h"
#include "tools/text/printable_text.h"
#include "tools/text/wrapped_text.h"

namespace sensorvela::tools {
namespace {

using testkit::Answer;
using Look = ReportLine::Look;

/// The width of the column of instants; a broken line's further parts begin after it.
constexpr std::size_t kTimeWidth = 14;
constexpr std::size_t kMarkWidth = 9;
constexpr std::size_t kWideMarkWidth = 11;
// Wide enough for the names of the event atoms; the few longer names exceed it.
constexpr std::size_t kAtomWidth = 37;
/// What a line has beside its instant, however narrow the terminal is.
constexpr std::size_t kMinTextWidth = 20;

std::string Padded(std::string text, std::size_t width) {
  text += "  ";
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string Mark(const AtomFact& fact) {
  if (!fact.answer) return "DROPPED";
  if (fact.fate == BufferFate::kLost) return "LOST";
  if (fact.fate == BufferFate::kLeft) return "IN BUFFER";
  if (*fact.answer == Answer::kOk) return "atom";
  return *fact.answer == Answer::kError ? "FAILED" : "NO STATUS";
}

/// The log line without the count that each error past the cap has of its own.
std::string WithoutCount(std::string text) {
  constexpr std::string_view kBefore = "has occurred [";
  const std::size_t before = text.find(kBefore);
  if (before == std::string::npos) return text;
  const std::size_t count = before + kBefore.size();
  return text.erase(count, text.find(']', count) - count);
}

class TextReport : public RunObserver {
 public:
  TextReport(std::ostream& out, const SensorNames& names, TextOptions options)
      : out_(out), names_(names), options_(std::move(options)) {}

  void OnAtom(Instant at, const AtomFact& fact) override {
    if (options_.summary_only || !options_.only.Has(fact.id, fact.sensor)) return;
    std::string start = Marked(Mark(fact));
    if (fact.dropped) {
      const std::string name = fact.name.empty() ? "an atom" : fact.name;
      const std::string sensor = fact.sensor ? "  " + names_.Label(*fact.sensor) : "";
      Lost(at, start + name + sensor + "  " + Words(WordOf(*fact.dropped)) + ": ", fact.cause);
      return;
    }
    if (options_.wide) {
      const std::int32_t atom_id = fact.atom->atomId;
      const bool is_known = testkit::FindAtom(atom_id) != nullptr;
      const std::string id = is_known ? " (" + std::to_string(atom_id) + ")" : "";
      start += Padded(fact.name + id, kAtomWidth) + AllValues(fact, names_);
    } else {
      start += fact.name + "  ";
    }
    const std::string text = WithoutEnd(start + (options_.wide ? "" : FoldedValues(fact, names_)));
    if (fact.answer != Answer::kOk || fact.fate != BufferFate::kTaken) {
      Lost(at, text + "  ", fact.cause);
      return;
    }
    const std::string queued = Queued(at, fact.cause.at);
    ReportLine line = {.at = at, .text = text + queued, .key = text};
    if (!options_.wide && text.find('[') != std::string::npos) {
      line.short_text = WithoutEnd(start + FoldedValues(fact, names_, false)) + queued;
    }
    Line(line);
  }

  void OnErrorBlocked(Instant at, const Cause& cause, std::string_view /*text*/) override {
    const auto sensor = cause.sensor();
    if (options_.summary_only || !options_.only.Has(cause.atom_id(), sensor)) return;
    const std::string text = Marked("BLOCKED") + std::string(cause.what()) +
                             (sensor ? " of " + names_.Label(*sensor) : "") + ", past the cap";
    Line({.at = at,
          .text = text + LineNumber(cause),
          .look = Look::kWarning,
          .trace_line = cause.line(),
          .key = text});
  }

  void OnLogLine(Instant at, int priority, std::string_view tag, std::string_view text) override {
    if (options_.only.is_limited()) return;
    const std::string mark =
        Marked("log") + std::string(PriorityLetter(priority)) + ' ' + Printable(tag);
    Line({.at = at,
          .text = mark + ": " + Printable(text),
          .key = mark + ": " + WithoutCount(std::string(text))});
  }

  void OnOutage(const Outage& outage) override {
    if (options_.only.is_limited()) return;
    const char* const what = outage.lasts      ? "still away"
                             : outage.is_first ? "there, away"
                                               : "back, away";
    Line({.at = outage.to,
          .text = Marked("service") + what + " since " + Time(outage.from) + " for " +
                  Time(outage.to - outage.from) + ": " + Words(WordOf(outage.reason))});
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    if (options_.only.is_limited()) return;
    Line({.at = at, .text = Marked("suspended") + "until " + Time(at + duration)});
  }

  void OnNote(Instant at, std::string_view text) override {
    if (options_.only.is_limited()) return;
    Line({.at = at, .text = "# " + Printable(text)});
  }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    if (options_.findings_only) {
      FindingLines(summary.findings);
      return;
    }
    folder_.Flush();
    std::vector<SensorSummary> sensors = summary.sensors;
    std::erase_if(sensors, [&](const SensorSummary& sensor) {
      return !options_.only.Summarizes(sensor.sensor);
    });
    if (!options_.summary_only) out_ << '\n';
    if (!sensors.empty()) Samples(sensors);
    Counts(summary);
  }

 private:
  std::string Time(Instant at) const {
    return options_.wide ? ExactClockTime(at) : ShortClockTime(at);
  }

  /// When an atom was queued that is sent later: folded, to the second.
  std::string Queued(Instant sent, Instant queued) const {
    if (options_.wide) return sent == queued ? "" : "  queued at " + ExactClockTime(queued);
    return sent - queued < std::chrono::seconds(1) ? "" : "  queued " + ClockTime(queued);
  }

  std::string Marked(const std::string& mark) const {
    return Padded(mark, options_.wide ? kWideMarkWidth : kMarkWidth);
  }

  /// A line about an atom that is lost, with what had it queued.
  void Lost(Instant at, const std::string& text, const Cause& cause) {
    const std::string by =
        text + (cause.event ? "queued by " : "queued at the ") + std::string(cause.what());
    Line({.at = at,
          .text = by + (cause.at == at ? "" : " at " + Time(cause.at)) + LineNumber(cause),
          .look = Look::kLoss,
          .trace_line = cause.line(),
          .key = by});
  }

  static std::string LineNumber(const Cause& cause) {
    return cause.event ? ", line " + std::to_string(cause.event->line) : "";
  }

  void Line(const ReportLine& line) {
    if (options_.summary_only) return;
    if (options_.wide) {
      Print(line);
    } else {
      folder_.Add(line);
    }
  }

  void Print(const ReportLine& line) {
    const bool has_color = options_.color && line.look != Look::kPlain;
    if (has_color) out_ << (line.look == Look::kLoss ? "\x1b[31m" : "\x1b[33m");
    const std::string time = Padded(Time(line.at), options_.wide ? 0 : kTimeWidth);
    const std::size_t room = std::max(options_.width, TextOptions().width);
    const std::size_t columns = time.size() + Columns(line.text) + line.count.size();
    const bool is_short = columns > room && !line.short_text.empty();
    std::string lines =
        Broken((is_short ? line.short_text : line.text) + line.count, kTimeWidth, time.size());
    if (has_color) lines.insert(lines.size() - 1, "\x1b[0m");
    out_ << time << lines;
  }

  /// The text in lines of the width. The first begins after `taken` columns.
  std::string Broken(const std::string& text, std::size_t indent, std::size_t taken = 0) const {
    if (options_.wide) return text + '\n';
    return Wrapped(text, std::max(options_.width, indent + kMinTextWidth), indent, taken);
  }

  void FindingLines(const std::vector<Finding>& findings) {
    std::optional<FindingKind> explained;
    for (const Finding& finding : findings) {
      if (finding.sensor && !options_.only.Summarizes(*finding.sensor)) continue;
      out_ << FindingText(finding, names_) << '\n';
      if (explained == finding.kind) continue;
      explained = finding.kind;
      out_ << "  " << Broken(InfoOf(finding.kind).explanation, 2, 2);
    }
  }

  void Samples(const std::vector<SensorSummary>& sensors) {
    const bool has_bars = options_.wide || options_.summary_only;
    const std::string table = has_bars ? "" : LatencyTable(sensors, names_, options_.width);
    if (table.empty()) {
      out_ << "Samples by latency, as they arrived\n";
      for (const SensorSummary& sensor : sensors) Bars(sensor);
    } else {
      out_ << table;
      for (const SensorSummary& sensor : sensors) {
        if (sensor.not_reported.Total() == 0) continue;
        out_ << Broken(names_.Label(sensor.sensor) + ": " + ReportsText(sensor), 2);
      }
    }
    out_ << '\n';
  }

  void Bars(const SensorSummary& summary) {
    const SampleCounts& arrived = summary.arrived.counts;
    const std::string counts =
        std::to_string(arrived.samples) + " samples, " + std::to_string(arrived.late) + " late";
    const std::string times = ArrivalsText(summary.arrived);
    out_ << '\n'
         << Broken(
                names_.Label(summary.sensor) + ": " + counts + (times.empty() ? "" : ", ") + times,
                2)
         << Broken("  " + ReportsText(summary), 4)
         << LatencyBars(arrived, options_.wide ? 0 : options_.width);
  }

  void Counts(const Summary& summary) {
    for (const auto& [what, count, meaning, is_loss] : CountsOf(summary)) {
      std::array<char, 120> line;
      std::snprintf(line.data(), line.size(), "%-18s %10s%s%s", what,
                    count ? std::to_string(*count).c_str() : "-", meaning.empty() ? "" : "  ",
                    meaning.c_str());
      out_ << Broken(line.data(), 31);
    }
  }

  std::ostream& out_;
  const SensorNames& names_;
  const TextOptions options_;
  RepeatFolder folder_{[this](const ReportLine& line) { Print(line); }};
};

}  // namespace

std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out, const SensorNames& names,
                                            TextOptions options) {
  return std::make_unique<TextReport>(out, names, std::move(options));
}

}  // namespace sensorvela::tools
