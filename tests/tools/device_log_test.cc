#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include <sensorvela/testkit/world.h>

#include "tests/tools/trace_files.h"
#include "tools/log/library_line.h"
#include "tools/log/log_report.h"
#include "tools/log/log_summary.h"
#include "tools/log/read_lines.h"
#include "tools/text/atom_json.h"

namespace sensorvela::tools {
namespace {

using testing::Content;
using testing::SourcePath;

/// Reads the log as the tool does.
LogSummary Summarize(std::string_view log) {
  LogSummary summary;
  EXPECT_EQ(
      ReadLines(Input(std::string(log)), [&](std::string_view line) { summary.AddLine(line); }),
      "");
  return summary;
}

std::string TextOf(const LogSummary& summary) {
  std::ostringstream out;
  PrintText(summary, out);
  return out.str();
}

std::string JsonLinesOf(const LogSummary& summary) {
  std::ostringstream out;
  PrintJsonLines(summary, out);
  return out.str();
}

/// What the summary says, without the places.
std::string FactsOf(const LogSummary& summary) {
  const std::regex places(R"re(,"(started|wait_ended|first|last)":(null|\{[^}]*\}))re");
  const std::regex totals(R"re("kind":"log_summary".*("library_lines".*),"engine_starts".*\})re");
  return std::regex_replace(std::regex_replace(JsonLinesOf(summary), places, ""), totals, "$1}");
}

std::string Blocked(int call, const std::string& count) {
  std::ostringstream line;
  line << "E/sensor-vela( 1): HAL Error [" << call << "] has occurred [" << count
       << "] times in current cycle, upload blocked due to cap [10] met.\n";
  return line.str();
}

/// `form` with `%1` in the place of the time, `%2` of the priority and `%3` of the text.
std::string InForm(std::string form, std::string_view time, char priority, std::string_view text) {
  const std::pair<std::string_view, std::string_view> values[] = {
      {"%1", time}, {"%2", {&priority, 1}}, {"%3", text}};
  for (const auto& [mark, value] : values) {
    if (const auto at = form.find(mark); at != std::string::npos) form.replace(at, 2, value);
  }
  return form + '\n';
}

TEST(DeviceLogTest, ReadsTheSameFactsFromEveryForm) {
  struct Form {
    std::string line;
    std::string_view time_1;
    std::string_view time_2;  // 1.204 s later.
    bool has_tid;
  };
  // As the device's own library prints them (scripts/checks/device_libraries).
  const Form forms[] = {
      {"%2/sensor-vela(  812): %3", "", "", false},
      {"%2/sensor-vela( 1000:  812): %3", "", "", false},
      {"%2(  812) %3  (sensor-vela)", "", "", false},
      {"%2( root:  812) %3  (sensor-vela)", "", "", false},
      {"%1 %2/sensor-vela(  812): %3", "02-29 23:59:59.500", "03-01 00:00:00.704", false},
      {"%1 %2/sensor-vela( 1000:  812): %3", "2026-12-31 23:59:59.000000",
       "2027-01-01 00:00:00.204000", false},
      {"%1   812   830 %2 sensor-vela: %3", "11-23 08:00:01.000", "11-23 08:00:02.204", true},
      {"%1  root   812   830 %2 sensor-vela: %3", "        1795442401.123",
       "        1795442402.327", true},
      {"%1  1000   812   830 %2 sensor-vela: %3", "    12.000000001", "    13.204000001", true},
      {"%1  1000   812   830 %2 sensor-vela: %3", "2026-11-24 04:00:01.123 +1400",
       "2026-11-23 19:30:02.327 +0530", true},
      {"[ %1   812:  830 %2/sensor-vela ]\n%3\n", "11-23 08:00:01.000", "11-23 08:00:02.204", true},
      {"[ %1  1000:  812:  830 %2/sensor-vela ]\r\n%3\r\n\r", "2026-11-23 08:00:01.000000 -0500",
       "2026-11-23 08:00:02.204000 -0500", true},
  };
  for (const auto& [line, time_1, time_2, has_tid] : forms) {
    const LogSummary summary = Summarize(
        "--------- beginning of main\n" +
        InForm(line, time_1, 'I', "Waiting for IStats service to come up.") +
        InForm(line, time_2, 'I', "IStats service online.") +
        InForm(line, time_2, 'E', "Failed to report atom [id = -7].") +
        InForm(line, time_2, 'I', "Reporting HAL call [3] error [-22] on sensor [0xfffffffe].") +
        InForm(line, time_2, 'D', "IStats service online."));
    std::ostringstream expected;
    expected << R"({"library_lines":4,"unknown_lines":1})" << '\n'
             << R"({"kind":"engine_start","pid":812,"tid":)" << (has_tid ? "830" : "null")
             << R"(,"service":"online","wait_ms":)" << (time_1.empty() ? "null" : "1204") << R"(}
{"kind":"failed_reports","atom_id":-7,"name":null,"count":1}
{"kind":"hal_errors","call":3,"reported":1,"blocked":0,"not_in_log":0}
{"kind":"hal_errors_of_sensor","sensor_high":4294967294,"call":3,"error":-22,"lines":1}
)";
    EXPECT_EQ(FactsOf(summary), expected.str()) << line;
  }
  // The form without a process.
  EXPECT_EQ(Summarize("I/sensor-vela: IStats service online.").engines.rows.at(0).pid, Pid());
}

TEST(DeviceLogTest, DoesNotCountWhatOnlyLooksLikeTheLibrarysLines) {
  std::istringstream lines(Content(SourcePath("tests/logs/look_alikes.jsonl")));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    const std::string log = Json::parse(line);
    EXPECT_EQ(Summarize(log + '\n').library_lines, 0u) << log;
  }
  EXPECT_GT(count, 30);
}

TEST(DeviceLogTest, TellsWhatTheLogLostAndWhereACycleEnded) {
  struct Case {
    // `s`: an engine's start. `r`: a reported error. A number: a blocked one with this count. After
    // `@` the day.
    std::string lines;
    std::string facts;  // Reported, blocked and missing ones, and the ends: between which lines.
  };
  const std::string started = "E/sensor-vela( 1): IStats service is not registered.\n";
  const std::string reported =
      "I/sensor-vela( 1): Reporting HAL call [3] error [0] on sensor [0x00000001].\n";
  const std::string ten = "r r r r r r r r r r ";
  const Case cases[] = {
      {ten + "11 12", "10 2 0"},
      {ten + "11 15", "10 5 3"},
      {ten + "13", "10 3 2"},
      {"r r r 11", "10 1 7"},
      {"5000", "10 4990 4999"},
      // Two lines that a blocked one has overtaken.
      {"r r r r r r r r 11 r r 12", "10 2 0"},
      {ten + "11 r", "11 1 0 11-12"},
      {ten + "11 12 11", "20 3 10 12-13"},
      {ten + "11 " + ten + "11", "20 2 0 11-12"},
      // The second engine counts from zero; the first may log errors before its start.
      {"r r s r r s r r r r r r r 11", "14 1 3"},
      {"r r s r r r r r r r r 11 s r", "11 1 0"},
      // Without a blocked line the end is only known to be between the first and the last.
      {ten + "r", "11 0 0 1-11"},
      {ten + "r r r", "13 0 0 3-11"},
      {ten + ten + "r", "21 0 0 10-11 11-21"},
      // The blocked line tells which ten were reported in its cycle.
      {"r r r r " + ten + "11", "14 1 0 4-5"},
      // New Year, in a log without the year.
      {"15@12-31 r@01-01 r@01-01", "12 5 14 1-2"},
      // Errors long before the start that the log has are another engine's.
      {"r@11-22 r@11-22 s@11-23 11@11-23", "12 1 10"},
  };
  for (const Case& test : cases) {
    std::string log;
    std::istringstream lines(test.lines);
    for (std::string line; lines >> line;) {
      const std::size_t at = line.find('@');
      if (at != std::string::npos) log += line.substr(at + 1) + " 08:00:00.000 ";
      line.resize(std::min(at, line.size()));
      log += line == "s" ? started : line == "r" ? reported : Blocked(3, line);
    }
    const LogSummary summary = Summarize(log);
    const ErrorTally& tally = summary.hal_errors.by_enumerator.rows.at(3);
    std::ostringstream facts;
    facts << tally.reported << ' ' << tally.blocked << ' ' << tally.missing;
    for (const auto& [pid, between] : summary.cycle_ends.rows) {
      facts << ' ' << between.after.line << '-' << between.before.line;
    }
    EXPECT_EQ(facts.str(), test.facts) << test.lines;
  }
}

// The README's table has every line, and its letters are those of the priorities.
TEST(DeviceLogTest, KnowsEveryLineOfTheReadme) {
  std::istringstream readme(Content(SourcePath("README.md")));
  std::set<LineKind> kinds;
  for (std::string line; std::getline(readme, line);) {
    if (!line.starts_with("| I `") && !line.starts_with("| E `")) continue;
    const auto found = FindLibraryLine(line[2], line.substr(5, line.find('`', 5) - 5));
    EXPECT_TRUE(found && kinds.insert(found->kind).second) << line;
  }
  EXPECT_EQ(kinds.size(), 10u);
}

/// Reports both kinds of error, several times, and appends what the engine logs.
void Fail(testkit::World& world, int times, std::string& log) {
  for (int i = 0; i < 2 * times; ++i) {
    if (i % 2 == 0) world.engine().LogSensorHalError({0x10, 1}, SensorVela::HalCall{3}, -22);
    if (i % 2 == 1) world.engine().LogSensorRuntimeError({0x20, 1}, SensorVela::ErrorType{1}, 7);
    for (const std::string& entry : world.TakeHistory()) {
      if (entry[1] == ' ') log += entry[0] + ("/sensor-vela( 1): " + entry.substr(2)) + '\n';
    }
  }
}

TEST(DeviceLogTest, UnderstandsWhatAnEngineWrites) {
  testkit::World world;
  world.StartEngine();
  std::string log;
  Fail(world, 13, log);
  world.time.RunFor(std::chrono::hours(6));
  world.RefuseService();
  Fail(world, 1, log);
  EXPECT_EQ(FactsOf(Summarize(log)), R"({"library_lines":32,"unknown_lines":0}
{"kind":"engine_start","pid":1,"tid":null,"service":"online","wait_ms":null}
{"kind":"service_away","pid":1,"lost_drains":2}
{"kind":"hal_errors","call":3,"reported":11,"blocked":3,"not_in_log":0}
{"kind":"hal_errors_of_sensor","sensor_high":16,"call":3,"error":-22,"lines":11}
{"kind":"runtime_errors","type":1,"reported":11,"blocked":3,"not_in_log":0}
{"kind":"runtime_errors_of_sensor","sensor_high":32,"type":1,"code":7,"lines":11}
{"kind":"cycle_end","pid":1,"after":{"line":28,"time":null},"before":{"line":29,"time":null}}
)");
}

TEST(DeviceLogTest, LimitsItsTables) {
  std::ostringstream log;
  for (int i = 0; i < 3000; ++i) {
    const std::string tag = "/sensor-vela(" + std::to_string(i) + "): ";
    log << 'I' << tag << "Waiting for IStats service to come up.\n"
        << 'E' << tag << "Failed to get IStats service. Atoms are dropped.\n"
        << 'E' << tag << "Failed to report atom [id = " << i << "].\n"
        << 'I' << tag << "Reporting HAL call [" << i << "] error [0] on sensor [0x00000001].\n"
        << Blocked(i, "12") << Blocked(i, "12");
  }
  const LogSummary summary = Summarize(log.str());
  std::string limits;
  std::istringstream lines(JsonLinesOf(summary));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(R"({"kind":"more",)")) limits += line.substr(15) + '\n';
  }
  // Of the ends, only those of the first thousand kinds of error are followed.
  EXPECT_EQ(limits, R"("of":"engine_start","lines":2900}
"of":"service_away","lines":2900}
"of":"failed_reports","lines":2900}
"of":"hal_errors","lines":8700}
"of":"hal_errors_of_sensor","lines":2900}
"of":"cycle_end","lines":400}
)");
  EXPECT_EQ(summary.engines.rows.size(), kMaxRows);
  EXPECT_EQ(summary.starts, 3000u);
  EXPECT_NE(TextOf(summary).find("\n  and 2900 more that are not listed\n"), std::string::npos);

  LogSummary without_starts;
  for (int i = 0; i < 105; ++i) {
    without_starts.AddLine("I/sensor-vela(" + std::to_string(i) + "): IStats service online.");
  }
  EXPECT_EQ(without_starts.starts, 105u);
  EXPECT_EQ(without_starts.engines.further_lines, 5u);
}

TEST(DeviceLogTest, AMessageThatWasCutEndsWithItsLog) {
  const std::string header = "[ 11-23 08:00:00.000   900:  901 I/other ]";
  const std::string online = "I/sensor-vela: IStats service online.";
  EXPECT_EQ(Summarize(header + "\n------ SYSTEM LOG ------\n" + online).library_lines, 1u);
  LogSummary summary;
  summary.AddLine(header);
  summary.EndFile();
  summary.AddLine(online);
  EXPECT_EQ(summary.library_lines, 1u);
}

TEST(DeviceLogTest, ReadsLinesOfAnyLength) {
  const std::string online = "I/sensor-vela: IStats service online.";
  const std::string filler(5'000'000, 'x');
  const std::string zeros = std::string(500'000, '0');
  const LogSummary summary = Summarize(online + filler + "\n" + online + "\n" + filler + online +
                                       "\n" + zeros + "1.000 " + online + "\n\n" + online);
  EXPECT_EQ(summary.lines, 6u);
  EXPECT_EQ(summary.library_lines, 2u);
}

// A bug report with two logs, other processes' lines, look-alikes, and broken and cut lines.
TEST(DeviceLogTest, ReportsABugReport) {
  const LogSummary summary = Summarize(Content(SourcePath("tests/logs/bug_report.log")));
  const std::string text = TextOf(summary);
  EXPECT_EQ(text, Content(SourcePath("tests/logs/bug_report.text")));
  EXPECT_EQ(JsonLinesOf(summary), Content(SourcePath("tests/logs/bug_report.json_lines")));
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 100u) << line;
}

}  // namespace
}  // namespace sensorvela::tools
