#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/log/log_report.h"

namespace sensorvela::devicelog {
namespace {

constexpr std::int64_t kNsPerMs = 1'000'000;

/// Columns that are as wide as their widest text.
class Table {
 public:
  Table(std::string title, std::vector<std::string> columns) : title_(std::move(title)) {
    rows_.push_back(std::move(columns));
  }

  void Row(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

  /// Prints nothing if the table is empty.
  void Print(std::ostream& out, std::uint64_t further_lines) const {
    if (rows_.size() == 1 && further_lines == 0) return;
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    out << '\n' << title_ << '\n';
    for (const auto& row : rows_) {
      std::string line = " ";
      for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string gap(widths[i] - row[i].size(), ' ');
        line += ' ' + (IsNumber(i) ? gap + row[i] : row[i] + gap) + ' ';
      }
      out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    }
    if (further_lines > 0) out << "  and " << further_lines << " more lines\n";
  }

 private:
  /// Numbers are aligned at the right.
  bool IsNumber(std::size_t column) const {
    return std::all_of(rows_.begin() + 1, rows_.end(), [column](const auto& row) {
      return row[column].find_first_not_of("-0123456789") == std::string::npos;
    });
  }

  std::string title_;
  std::vector<std::vector<std::string>> rows_;
};

/// Milliseconds, without a year and a zone, so that every table fits a screen; the line's number
/// where there is no time.
std::string Text(const Place& place) {
  const std::string& time = place.time.text;
  if (time.empty()) return "line " + std::to_string(place.line);
  const std::size_t start = time.find('-') == 4 ? 5 : 0;
  return time.substr(start, time.find('.') + 4 - start);
}

std::string Text(const std::optional<Place>& place) { return place ? Text(*place) : "-"; }
std::string Text(const Pid& pid) { return pid ? std::to_string(*pid) : "-"; }

std::string SensorText(std::uint32_t sensor_high) {
  std::array<char, 11> text;
  std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(sensor_high));
  return text.data();
}

std::string ServiceText(const EngineStart& engine) {
  switch (engine.service) {
    case ServiceAtStart::kWaiting:
      return "NOT UP: the log has no end of the wait";
    case ServiceAtStart::kNotDeclared:
      return "NOT DECLARED in the device's manifest";
    case ServiceAtStart::kNotFound:
      return "NOT FOUND: access refused, or the service manager failed";
    case ServiceAtStart::kOnline:
      break;
  }
  const std::optional<std::int64_t> ns = engine.WaitNs();
  if (!ns) return "online";
  std::array<char, 60> text;
  std::snprintf(text.data(), text.size(), "online after %lld.%03lld s",
                static_cast<long long>(*ns / kNsPerMs / 1000),
                static_cast<long long>(*ns / kNsPerMs % 1000));
  return text.data();
}

std::uint64_t Count(const Occurrences& occurrences) { return occurrences.count; }
std::uint64_t Count(const ErrorTally& tally) { return tally.reported + tally.blocked; }

/// The rows with the largest counts come first.
template <typename Key, typename Row>
std::vector<std::pair<Key, Row>> ByCount(const std::map<Key, Row>& rows) {
  std::vector<std::pair<Key, Row>> sorted(rows.begin(), rows.end());
  std::ranges::stable_sort(
      sorted, [](const auto& a, const auto& b) { return Count(a.second) > Count(b.second); });
  return sorted;
}

struct FamilyNames {
  std::string errors;
  std::string enumerator;
  std::string code;
};

void Print(const ErrorFamily& family, const FamilyNames& names, std::ostream& out) {
  Table tallies(names.errors + " by " + names.enumerator,
                {names.enumerator, "reported", "blocked", "not in log", "first", "last"});
  for (const auto& [number, tally] : ByCount(family.by_enumerator.rows)) {
    tallies.Row({std::to_string(number), std::to_string(tally.reported),
                 std::to_string(tally.blocked), std::to_string(tally.missing),
                 Text(tally.lines.first), Text(tally.lines.last)});
  }
  tallies.Print(out, family.by_enumerator.further_lines);

  Table sensors(names.errors + " by sensor",
                {"sensor", names.enumerator, names.code, "lines", "first", "last"});
  for (const auto& [error, lines] : ByCount(family.by_sensor.rows)) {
    sensors.Row({SensorText(error.sensor_high), std::to_string(error.enumerator),
                 std::to_string(error.code), std::to_string(lines.count), Text(lines.first),
                 Text(lines.last)});
  }
  sensors.Print(out, family.by_sensor.further_lines);
}

void PrintTotals(const LogSummary& summary, std::ostream& out) {
  const ErrorTally& hal = summary.hal_errors.total;
  const ErrorTally& runtime = summary.runtime_errors.total;
  const auto total = [&](std::uint64_t count, std::string_view what) {
    std::array<char, 24> number;
    std::snprintf(number.data(), number.size(), "%12llu", static_cast<unsigned long long>(count));
    out << number.data() << "  " << what << '\n';
  };
  total(summary.lines, "lines read");
  total(summary.library_lines, "of them are the library's");
  if (summary.unknown_lines > 0) {
    total(summary.unknown_lines, "have its tag and a text that it does not write");
  }
  total(summary.starts, "engine starts");
  total(summary.lost_drains, "drains lost: the service was not found");
  total(summary.failed_reports, "atoms lost: their report failed");
  total(hal.reported + runtime.reported, "errors reported");
  total(hal.blocked + runtime.blocked, "errors blocked by the cap");
  total(hal.missing + runtime.missing,
        "of both are not in the log: the counts show that they occurred");
}

}  // namespace

void PrintText(const LogSummary& summary, std::ostream& out) {
  PrintTotals(summary, out);

  Table engines("Engine starts", {"pid", "time", "stats service"});
  for (const EngineStart& engine : summary.engines.rows) {
    engines.Row({Text(engine.pid), Text(engine.started), ServiceText(engine)});
  }
  engines.Print(out, summary.engines.further_lines);

  Table absences("Service away", {"pid", "drains lost", "first", "last"});
  for (const ServiceAbsence& absence : summary.absences.rows) {
    absences.Row({Text(absence.pid), std::to_string(absence.drains.count),
                  Text(absence.drains.first), Text(absence.drains.last)});
  }
  absences.Print(out, summary.absences.further_lines);

  Table atoms("Failed reports", {"id", "atom", "lost", "first", "last"});
  for (const auto& [id, reports] : ByCount(summary.failed_atoms.rows)) {
    const testkit::AtomInfo* const atom = testkit::FindAtom(id);
    atoms.Row({std::to_string(id), atom == nullptr ? "-" : std::string(atom->name),
               std::to_string(reports.count), Text(reports.first), Text(reports.last)});
  }
  atoms.Print(out, summary.failed_atoms.further_lines);

  Print(summary.hal_errors, {"HAL errors", "call", "error"}, out);
  Print(summary.runtime_errors, {"Runtime errors", "type", "code"}, out);

  Table ends("Ends of a cycle, where a count starts afresh", {"pid", "after", "before"});
  for (const CycleEnd& end : summary.cycle_ends.rows) {
    ends.Row({Text(end.pid), Text(end.between.after), Text(end.between.before)});
  }
  ends.Print(out, summary.cycle_ends.further_lines);
}

}  // namespace sensorvela::devicelog
