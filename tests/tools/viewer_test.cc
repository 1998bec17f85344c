// Checks what `sensorvela-replay --trace-out` writes against the rules of the Trace Event Format.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/tools/trace_files.h"
#include "tools/report/json_lines_report.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"
#include "tools/viewer/viewer_observer.h"

namespace sensorvela::replay {
namespace {

using nlohmann::json;

// The keys that a viewer needs in an event, by phase.
const std::map<std::string, std::vector<std::string>> kRequiredKeys = {
    {"M", {"name", "pid", "tid", "args"}},
    {"X", {"name", "cat", "pid", "tid", "ts", "dur"}},
    {"I", {"name", "pid", "tid", "ts", "s", "cat"}},
    {"C", {"name", "pid", "ts", "args"}}};

/// Converts microseconds with fractions to nanoseconds.
std::int64_t Ns(const json& microseconds) {
  return std::llround(microseconds.get<double>() * 1000);
}

/// The events of one track or counter so far.
struct Row {
  std::int64_t last_ns = 0;
  std::optional<std::int64_t> span_end_ns;
};

void CheckTimes(const json& event, Row& row) {
  const std::int64_t at_ns = Ns(event.at("ts"));
  EXPECT_GE(at_ns, std::exchange(row.last_ns, at_ns));
  if (event.at("ph") != "X") return;
  const bool is_reporter_thread = event.at("pid") == 1;
  // The reporter thread's spans follow each other without a gap.
  EXPECT_GE(at_ns, row.span_end_ns.value_or(0));
  EXPECT_TRUE(at_ns == row.span_end_ns.value_or(at_ns) || !is_reporter_thread);
  row.span_end_ns = at_ns + Ns(event.at("dur"));
  EXPECT_LE(at_ns, row.span_end_ns);
}

/// Checks the events of a whole file, and counts its marks by category.
std::map<std::string, std::uint64_t> CheckedMarks(const json& events) {
  std::map<std::string, std::uint64_t> marks;
  std::map<std::tuple<int, int, std::string>, Row> rows;
  for (const json& event : events) {
    SCOPED_TRACE(event.dump());
    const auto phase = event.at("ph").get<std::string>();
    for (const auto& key : kRequiredKeys.at(phase)) EXPECT_TRUE(event.contains(key)) << key;
    if (phase == "M") continue;
    const std::string counter = phase == "C" ? event.at("name") : "";
    CheckTimes(event, rows[{event.at("pid"), event.at("tid"), counter}]);
    if (phase == "I") ++marks[event.at("cat")];
  }
  return marks;
}

struct Written {
  json summary;
  std::string viewer;
};

Written Replayed(const std::string& path) {
  std::stringstream printed;
  std::ostringstream viewer;
  const Trace trace(path, OpenTrace(path));
  const SensorNames& names = trace.sensor_names();
  Replay({MakeJsonLinesReport(printed, names).get(), MakeViewerObserver(viewer, names).get()},
         false)
      .Run(trace.Events());
  json last;
  for (std::string line; std::getline(printed, line);) last = json::parse(line);
  return {last, viewer.str()};
}

class ViewerTest : public ::testing::TestWithParam<std::string> {};

TEST_P(ViewerTest, KeepsTheFormatsRulesAndTheSummarysCounts) {
  const auto [summary, viewer] = Replayed(testing::SourcePath(GetParam() + ".jsonl"));
  auto marks = CheckedMarks(json::parse(viewer).at("traceEvents"));
  EXPECT_EQ(marks["delivered"], summary.at("delivered"));
  EXPECT_EQ(marks["failed"], summary.at("failed"));
  EXPECT_EQ(marks["dropped"], summary.at("dropped"));
  EXPECT_EQ(marks["blocked"], summary.at("blocked_by_cap"));
}

const auto kTestName = [](const auto& test) { return testing::TraceName(test.param); };
INSTANTIATE_TEST_SUITE_P(Traces, ViewerTest, ::testing::ValuesIn(testing::TracesIn("tests/traces")),
                         kTestName);
INSTANTIATE_TEST_SUITE_P(Examples, ViewerTest, ::testing::ValuesIn(testing::TracesIn("examples")),
                         kTestName);

}  // namespace
}  // namespace sensorvela::replay
