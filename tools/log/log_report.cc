#include "tools/log/log_report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tools/text/atom_json.h"

namespace sensorvela::tools {
namespace {

constexpr int kFormatVersion = 1;

/// Facts of one kind. For a program a row is an object, for a reader the keys are columns.
struct Table {
  std::string kind;
  std::string title;
  std::vector<Json> rows;
  std::uint64_t further_lines;
};

template <typename T>
Json ToJson(const std::optional<T>& value) {
  return value ? Json(*value) : Json();
}

Json ToJson(const LogPosition& position) {
  return {{"line", position.line},
          {"time", position.time.text.empty() ? Json() : Json(position.time.text)}};
}

Json ToJson(const std::optional<LogPosition>& position) {
  return position ? ToJson(*position) : Json();
}

const char* Name(ServiceAtStart service) {
  switch (service) {
    case ServiceAtStart::kOnline:
      return "online";
    case ServiceAtStart::kWaiting:
      return "waiting";
    case ServiceAtStart::kNotDeclared:
      return "not_declared";
    case ServiceAtStart::kNotFound:
      return "not_found";
  }
  return "?";
}

const char* Name(WhyNoEnds why) {
  switch (why) {
    case WhyNoEnds::kNoProcess:
      return "no_process";
    case WhyNoEnds::kNoStart:
      return "no_start";
    case WhyNoEnds::kSeveralEngines:
      return "several_engines";
  }
  return "?";
}

Json ToRow(const EngineStart& engine) {
  return {{"pid", ToJson(engine.pid)},         {"tid", ToJson(engine.tid)},
          {"service", Name(engine.service)},   {"wait_ms", ToJson(engine.WaitMs())},
          {"started", ToJson(engine.started)}, {"wait_ended", ToJson(engine.wait_ended)}};
}

Json ToRow(const ServiceAbsence& absence) {
  return {{"pid", ToJson(absence.pid)},
          {"tid", ToJson(absence.tid)},
          {"lost_drains", absence.drains.count},
          {"first", ToJson(absence.drains.first)},
          {"last", ToJson(absence.drains.last)}};
}

Json ToRow(const CycleEnd& end) {
  return {{"pid", ToJson(end.pid)},
          {"after", ToJson(end.between.after)},
          {"before", ToJson(end.between.before)}};
}

Json ToRow(const UntoldEnds& ends) { return {{"pid", ToJson(ends.pid)}, {"why", Name(ends.why)}}; }

template <typename Row>
std::vector<Json> ToRows(const std::vector<Row>& rows) {
  std::vector<Json> objects;
  for (const Row& row : rows) objects.push_back(ToRow(row));
  return objects;
}

std::uint64_t Count(const Occurrences& occurrences) { return occurrences.count; }
std::uint64_t Count(const ErrorTally& tally) { return tally.reported + tally.blocked; }

/// The rows with the largest counts come first.
template <typename Key, typename Row, typename ToObject>
std::vector<Json> ToRows(const std::map<Key, Row>& rows, const ToObject& to_object) {
  std::vector<std::pair<Key, Row>> sorted(rows.begin(), rows.end());
  std::ranges::stable_sort(
      sorted, [](const auto& a, const auto& b) { return Count(a.second) > Count(b.second); });
  std::vector<Json> objects;
  for (const auto& [key, row] : sorted) objects.push_back(to_object(key, row));
  return objects;
}

Json FailedReports(std::int32_t atom_id, const Occurrences& reports) {
  const testkit::AtomInfo* const atom = testkit::FindAtom(atom_id);
  return {{"atom_id", atom_id},
          {"name", atom == nullptr ? Json() : Json(atom->name)},
          {"count", reports.count},
          {"first", ToJson(reports.first)},
          {"last", ToJson(reports.last)}};
}

void AddErrors(const ErrorTable& family, const std::string& kind, const std::string& title,
               const std::string& enumerator, const std::string& code, std::vector<Table>& tables) {
  const auto tally_row = [&](std::int32_t number, const ErrorTally& tally) -> Json {
    return {{enumerator, number},
            {"reported", tally.reported},
            {"blocked", tally.blocked},
            {"not_in_log", tally.missing},
            {"first", ToJson(tally.lines.first)},
            {"last", ToJson(tally.lines.last)}};
  };
  tables.push_back({kind, title + " by " + enumerator, ToRows(family.by_enumerator.rows, tally_row),
                    family.by_enumerator.further_lines});
  const auto sensor_row = [&](const ReportedError& error, const Occurrences& lines) -> Json {
    return {{"sensor_high", error.sensor_high},
            {enumerator, error.enumerator},
            {code, error.code},
            {"lines", lines.count},
            {"first", ToJson(lines.first)},
            {"last", ToJson(lines.last)}};
  };
  tables.push_back({kind + "_of_sensor", title + " by sensor",
                    ToRows(family.by_sensor.rows, sensor_row), family.by_sensor.further_lines});
}

Json Totals(const LogSummary& summary) {
  const ErrorTally& hal = summary.hal_errors.total;
  const ErrorTally& runtime = summary.runtime_errors.total;
  return {{"lines", summary.lines},
          {"library_lines", summary.library_lines},
          {"unknown_lines", summary.unknown_lines},
          {"engine_starts", summary.starts},
          {"lost_drains", summary.lost_drains},
          {"failed_reports", summary.failed_reports},
          {"errors_reported", hal.reported + runtime.reported},
          {"errors_blocked", hal.blocked + runtime.blocked},
          {"errors_not_in_log", hal.missing + runtime.missing}};
}

std::vector<Table> Tables(const LogSummary& summary) {
  std::vector<Table> tables = {
      {"engine_start", "Engine starts", ToRows(summary.engines.rows),
       summary.engines.further_lines},
      {"service_away", "Service away", ToRows(summary.absences.rows),
       summary.absences.further_lines},
      {"failed_reports", "Failed reports", ToRows(summary.failed_atoms.rows, FailedReports),
       summary.failed_atoms.further_lines},
  };
  AddErrors(summary.hal_errors, "hal_errors", "HAL errors", "call", "error", tables);
  AddErrors(summary.runtime_errors, "runtime_errors", "Runtime errors", "type", "code", tables);
  tables.push_back({"cycle_end", "Ends of a cycle: a count starts afresh",
                    ToRows(summary.cycle_ends.rows), summary.cycle_ends.further_lines});
  tables.push_back({"cycle_ends_untold", "Counts that start afresh without telling a cycle's end",
                    ToRows(summary.untold_ends.rows), summary.untold_ends.further_lines});
  return tables;
}

std::string Words(std::string key) {
  std::ranges::replace(key, '_', ' ');
  return key;
}

/// Milliseconds, without a year and a zone, so that every table fits a screen; the line's number
/// where there is no time.
std::string PositionText(const Json& position) {
  if (position["time"].is_null()) return "line " + position["line"].dump();
  const auto time = position["time"].get<std::string>();
  const std::size_t start = time.find('-') == 4 ? 5 : 0;
  return time.substr(start, time.find('.') + 4 - start);
}

std::string CellText(const std::string& key, const Json& value) {
  if (value.is_null()) return "-";
  if (value.is_object()) return PositionText(value);
  if (value.is_string()) return Words(value.get<std::string>());
  if (key != "sensor_high") return value.dump();
  std::array<char, 11> text;  // As the log writes it.
  std::snprintf(text.data(), text.size(), "0x%08x", value.get<unsigned>());
  return text.data();
}

/// Columns that are as wide as their widest text. Numbers are aligned at the right.
void PrintTable(const Table& table, std::ostream& out) {
  std::vector<std::string> lines(table.rows.size() + 1, " ");
  for (const auto& [key, first_value] : table.rows.front().items()) {
    std::vector<std::string> cells = {Words(key)};
    bool is_number = false;
    for (const Json& row : table.rows) {
      cells.push_back(CellText(key, row[key]));
      is_number = is_number || (row[key].is_number() && key != "sensor_high");
    }
    const std::size_t width = std::ranges::max(cells, {}, &std::string::size).size();
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string gap(width - cells[i].size(), ' ');
      lines[i] += ' ' + (is_number ? gap + cells[i] : cells[i] + gap) + ' ';
    }
  }
  out << '\n' << table.title << '\n';
  for (const std::string& line : lines) {
    out << std::string_view(line).substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
  if (table.further_lines > 0) {
    out << "  and " << table.further_lines << " more that are not listed\n";
  }
}

}  // namespace

void PrintText(const LogSummary& summary, std::ostream& out) {
  const Json totals = Totals(summary);
  for (const auto& [key, count] : totals.items()) {
    std::array<char, 24> number;
    std::snprintf(number.data(), number.size(), "%12s", count.dump().c_str());
    out << number.data() << "  " << Words(key) << '\n';
  }
  for (const Table& table : Tables(summary)) {
    if (!table.rows.empty()) PrintTable(table, out);
  }
}

void PrintJsonLines(const LogSummary& summary, std::ostream& out) {
  const auto print = [&out](Json object, const Json& more) {
    object.update(more);
    out << Dump(object, false) << '\n';
  };
  print({{"kind", "log_summary"}, {"version", kFormatVersion}}, Totals(summary));
  for (const Table& table : Tables(summary)) {
    for (const Json& row : table.rows) print({{"kind", table.kind}}, row);
    if (table.further_lines == 0) continue;
    print({{"kind", "more"}}, {{"of", table.kind}, {"lines", table.further_lines}});
  }
}

}  // namespace sensorvela::tools
