#include "tools/report/text_report.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/report/latency_bars.h"
#include "tools/text/atom_json.h"
#include "tools/text/clock_time.h"
#include "tools/text/names.h"
#include "tools/text/printable_text.h"

namespace sensorvela::replay {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

class TextReport : public RunObserver {
 public:
  TextReport(std::ostream& out, const SensorNames& names) : out_(out), names_(names) {}

  void OnAtomReported(Instant at, const VendorAtom& atom, Answer answer) override {
    std::string name = testkit::AtomName(atom);
    if (testkit::FindAtom(atom.atomId) != nullptr) name += " (" + std::to_string(atom.atomId) + ")";
    std::string line = Padded(Mark(answer), kMarkWidth) + Padded(name, kAtomWidth);
    if (!atom.reverseDomainName.empty()) {
      line += "domain=" + Dump(atom.reverseDomainName, true) + ' ';
    }
    for (std::size_t i = 0; i < atom.values.size(); ++i) {
      line += testkit::ValueName(atom, i) + '=' + ValueText(atom.values[i]) + ' ';
    }
    Line(at, line.substr(0, line.find_last_not_of(' ') + 1));
  }

  void OnLogLine(Instant at, int priority, std::string_view tag, std::string_view text) override {
    Line(at, Padded("log", kMarkWidth) + std::string(PriorityLetter(priority)) + ' ' +
                 Printable(tag) + ": " + Printable(text));
  }

  void OnSuspended(Instant at, std::chrono::nanoseconds duration) override {
    Line(at, Padded("suspended", kMarkWidth) + "until " + ExactClockTime(at + duration));
  }

  void OnNote(Instant at, std::string_view text) override { Line(at, "# " + Printable(text)); }

  void OnRunEnd(Instant /*at*/, const Summary& summary) override {
    if (!summary.sensors.empty()) out_ << "\nSamples by latency, as the engine's reports say\n";
    for (const SensorSummary& sensor : summary.sensors) Sensor(sensor);
    out_ << '\n';
    Count("delivered", summary.delivered, "atoms that the stats service took");
    Count("failed", summary.failed, "atoms whose report failed or ended without a status");
    Count("dropped", summary.dropped, "atoms queued that never reached it");
    Count("blocked by the cap", summary.blocked_by_cap,
          "errors past the 10 of a kind that a cycle allows");
    if (summary.cycles_ended) {
      Count("cycles ended", *summary.cycles_ended, "");
    } else {
      out_ << "cycles ended                -  unknown: there is no diagnostics supplier\n";
    }
  }

 private:
  static constexpr std::size_t kMarkWidth = 11;
  // Wide enough for the names of the event atoms; the few longer names exceed it.
  static constexpr std::size_t kAtomWidth = 37;

  static std::string Mark(Answer answer) {
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

  static std::string Padded(std::string text, std::size_t width) {
    text += "  ";
    if (text.size() < width) text.resize(width, ' ');
    return text;
  }

  static std::string ValueText(const VendorAtomValue& value) {
    const Json json = ToJson(value);
    const bool not_a_number = json.is_string() && value.getTag() == VendorAtomValue::floatValue;
    return not_a_number ? json.get<std::string>() : Dump(json, true);
  }

  void Line(Instant at, const std::string& text) {
    out_ << ExactClockTime(at) << "  " << text << '\n';
  }

  void Sensor(const SensorSummary& summary) {
    const ReportedSamples& reported = summary.reported;
    out_ << '\n'
         << names_.Label(summary.sensor) << ": " << summary.delivered << " samples, "
         << reported.samples << " reported, " << summary.NotReported() << " not reported, "
         << reported.late << " late\n"
         << LatencyBars(reported);
  }

  void Count(const char* what, std::uint64_t count, const char* meaning) {
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "%-18s %10llu%s%s", what,
                  static_cast<unsigned long long>(count), *meaning == '\0' ? "" : "  ", meaning);
    out_ << line.data() << '\n';
  }

  std::ostream& out_;
  const SensorNames& names_;
};

}  // namespace

std::unique_ptr<RunObserver> MakeTextReport(std::ostream& out, const SensorNames& names) {
  return std::make_unique<TextReport>(out, names);
}

}  // namespace sensorvela::replay
