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

#include "tests/tools/gzipped.h"
#include "tests/tools/trace_files.h"
#include "tools/log/library_line.h"
#include "tools/log/log_report.h"
#include "tools/log/log_summary.h"
#include "tools/log/read_lines.h"
#include "tools/text/atom_json.h"

namespace sensorvela::tools {
namespace {

using testing::Content;
using testing::Gzipped;
using testing::SourcePath;

/// Reads the log as the tool does.
LogSummary Summarize(std::string_view log) {
  LogSummary summary;
  EXPECT_EQ(
      ReadLines(Input(std::string(log)), [&](std::string_view line) { summary.AddLine(line); }),
      "");
  summary.EndLog();
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
      {"\x1b[38;5;40m%1   812   830 %2 sensor-vela: %3\x1b[0m", "11-23 08:00:01.000",
       "11-23 08:00:02.204", true},
      {"\x1b[31m%2(  812) %3\x1b[0m  (sensor-vela)", "", "", false},
      {"\x1b[38;5;40m[ %1   812:  830 %2/sensor-vela ]\n%3\x1b[0m\n", "11-23 08:00:01.000",
       "11-23 08:00:02.204", true},
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

// A changed bit is reported, or changes no line: one in a header's time, say.
TEST(DeviceLogTest, SeesDamageAnywhereInGzipData) {
  const std::string member = Gzipped(Blocked(3, "11") + Blocked(3, "12"));
  const std::string whole = member + Gzipped(Blocked(4, "11"));
  const auto read = [](const std::string& data, std::string& lines) {
    return ReadLines(Input(data), [&](std::string_view line) { lines.append(line) += '\n'; });
  };
  std::string lines;
  ASSERT_EQ(read(whole, lines), "");
  std::size_t unseen = 0;
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    std::string changed = whole;
    changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
    std::string changed_lines;
    if (!read(changed, changed_lines).empty()) continue;
    ++unseen;
    EXPECT_EQ(changed_lines, lines) << "byte " << bit / 8 << ", bit " << bit % 8;
  }
  EXPECT_LT(unseen, 150u);  // Each header has 49 bits that say nothing of the lines.
  for (std::size_t size = 1; size < whole.size(); ++size) {
    std::string start;
    EXPECT_EQ(read(whole.substr(0, size), start).empty(), size == member.size()) << size;
  }
}

/// The log of a process. In `lines`, `s` is an engine's start, `r` a reported error, a number a
/// blocked one with this count, and what follows a `/` the thread, 1 unless given.
std::string LogOf(const std::string& lines, bool has_threads) {
  std::ostringstream log;
  std::istringstream words(lines);
  for (std::string word; words >> word;) {
    const std::size_t slash = word.find('/');
    const std::string thread = slash == std::string::npos ? "1" : word.substr(slash + 1);
    word.resize(std::min(slash, word.size()));
    std::string line = word == "s"   ? "E/sensor-vela( 1): IStats service is not registered.\n"
                       : word == "r" ? "I/sensor-vela( 1): Reporting HAL call [3] error [0] on "
                                       "sensor [0x00000001].\n"
                                     : Blocked(3, word);
    if (has_threads) {
      const std::string header = "11-23 08:00:00.000 1 " + thread + ' ' + line[0] + " sensor-vela";
      line.replace(0, line.find(':'), header);
    }
    log << line;
  }
  return log.str();
}

TEST(DeviceLogTest, TellsWhatTheLogLostAndWhereACycleEnded) {
  struct Case {
    std::string lines;  // After a start, which is line 1.
    // Reported, blocked and missing ones, and the ends: between which lines. Without the lines'
    // threads, and with them.
    std::string facts;
    std::string facts_with_threads;
  };
  const std::string ten = "r r r r r r r r r r ";
  const Case cases[] = {
      {ten + "11 12", "10 2 0", "10 2 0"},
      {ten + "11 15", "10 5 3", "10 5 3"},
      {ten + "13", "10 3 2", "10 3 2"},
      {"r r r 11", "10 1 7", "10 1 7"},
      {"5000", "10 4990 4999", "10 4990 4999"},
      // Blocked lines overtake reported ones, which do not end a cycle and are not missing.
      {"r r r r r r r r 11 r/2 r/3 12", "10 2 0", "10 2 0"},
      {"11 r/2 r/3 r/4 r/5 r/6 r/7 r/8 r/9 r/10 r/11", "10 1 0", "10 1 0"},
      // A thread's line after its blocked one is of a later cycle.
      {ten + "11 r", "11 1 0 1-13", "11 1 0 12-13"},
      {"r r r 11 r", "10 1 6", "11 1 7 5-6"},
      {ten + "11 12 11", "20 3 10 13-14", "20 3 10 13-14"},
      {ten + "11 " + ten + "11", "20 2 0 1-13", "20 2 0 12-13"},
      {"11 11", "20 2 20 2-3", "20 2 20 2-3"},
      // Blocked lines of two cycles whose counts rise: no more is missing than of one.
      {"11 13", "10 3 11", "10 3 11"},
      // Eleven errors that were counted after a line are not all of one cycle.
      {ten + "r", "11 0 0 1-12", "11 0 0 1-12"},
      {ten + ten + "r r", "22 0 0 1-12", "22 0 0 1-12 12-23"},
      // Intervals that overlap: each has an end, and their intersection may have none.
      {ten + "r r r", "13 0 0 1-12", "13 0 0 1-12"},
  };
  for (const Case& test : cases) {
    for (const bool has_threads : {false, true}) {
      const LogSummary summary = Summarize(LogOf("s/9 " + test.lines, has_threads));
      const ErrorTally& tally = summary.hal_errors.by_enumerator.rows.at(3);
      std::ostringstream facts;
      facts << tally.reported << ' ' << tally.blocked << ' ' << tally.missing;
      for (const auto& [pid, between] : summary.cycle_ends.rows) {
        facts << ' ' << between.after.line << '-' << between.before.line;
      }
      EXPECT_EQ(facts.str(), has_threads ? test.facts_with_threads : test.facts) << test.lines;
    }
  }
}

// The counts of several engines look like ends of cycles. No more errors are missing than if there
// were one cycle for each count that starts afresh.
TEST(DeviceLogTest, TellsNoEndsWhereThereMayBeSeveralEngines) {
  const std::string errors = "11 12 11 13 12 13";
  const std::string drain =
      "11-23 08:00:00.000 1 8 E sensor-vela: Failed to report atom [id = 1].\n";
  const struct {
    std::string log;
    std::string_view why;
  } cases[] = {
      {LogOf("s " + errors, false), ""},
      {LogOf(errors, false), "no_start"},
      {LogOf("s " + errors + " s", false), "several_engines"},
      {LogOf("s/9 s/8 " + errors, true), "several_engines"},
      {LogOf("s/9 " + errors, true) + drain, "several_engines"},
      {std::regex_replace(LogOf("s " + errors, false), std::regex("\\( 1\\)"), ""), "no_process"},
  };
  for (const auto& [log, why] : cases) {
    const LogSummary summary = Summarize(log);
    EXPECT_EQ(summary.hal_errors.total.reported, 20u) << log;
    EXPECT_EQ(summary.hal_errors.total.blocked, 6u) << log;
    EXPECT_EQ(summary.cycle_ends.rows.size(), why.empty() ? 2u : 0u) << log;
    const std::string untold = R"(,"why":")" + std::string(why) + R"("})";
    EXPECT_EQ(JsonLinesOf(summary).find(untold) != std::string::npos, !why.empty()) << log;
  }
}

// The document's table has every line, and its letters are those of the priorities.
TEST(DeviceLogTest, KnowsEveryLineOfTheDocument) {
  std::istringstream document(Content(SourcePath("docs/logs.md")));
  std::set<LineKind> kinds;
  for (std::string line; std::getline(document, line);) {
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
      if (entry[1] != ' ') continue;
      const bool is_reporter_thread = entry.find("IStats") != std::string::npos;
      log += "11-23 08:00:00.000 1 ";
      log += is_reporter_thread ? "2 " : "1 ";
      log += entry.substr(0, 2) + "sensor-vela: " + entry.substr(2) + '\n';
    }
  }
}

TEST(DeviceLogTest, UnderstandsWhatAnEngineWrites) {
  testkit::World world;
  world.StartEngine();
  world.time.WaitUntilSettled();
  std::string log;
  Fail(world, 13, log);
  world.time.RunFor(std::chrono::hours(6));
  world.RefuseService();
  Fail(world, 1, log);
  EXPECT_EQ(FactsOf(Summarize(log)), R"({"library_lines":32,"unknown_lines":0}
{"kind":"engine_start","pid":1,"tid":2,"service":"online","wait_ms":0}
{"kind":"service_away","pid":1,"tid":2,"lost_drains":2}
{"kind":"hal_errors","call":3,"reported":11,"blocked":3,"not_in_log":0}
{"kind":"hal_errors_of_sensor","sensor_high":16,"call":3,"error":-22,"lines":11}
{"kind":"runtime_errors","type":1,"reported":11,"blocked":3,"not_in_log":0}
{"kind":"runtime_errors_of_sensor","sensor_high":32,"type":1,"code":7,"lines":11}
{"kind":"cycle_end","pid":1,"after":{"line":27,"time":"11-23 08:00:00.000"},"before":{"line":29,"time":"11-23 08:00:00.000"}}
)");
}

TEST(DeviceLogTest, LimitsItsTables) {
  std::ostringstream log;
  log << "E/sensor-vela( 1): IStats service is not registered.\n";
  for (int i = 0; i < 3000; ++i) {
    const std::string tag = "/sensor-vela(" + std::to_string(i + 2) + "): ";
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
  EXPECT_EQ(limits, R"("of":"engine_start","lines":2901}
"of":"service_away","lines":2900}
"of":"failed_reports","lines":2900}
"of":"hal_errors","lines":8700}
"of":"hal_errors_of_sensor","lines":2900}
"of":"cycle_end","lines":400}
)");
  EXPECT_EQ(summary.engines.rows.size(), kMaxRows);
  EXPECT_EQ(summary.starts, 3001u);
  EXPECT_NE(TextOf(summary).find("\n  and 2901 more that are not listed\n"), std::string::npos);

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
