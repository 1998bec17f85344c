// What `sensorvela-replay --trace-out` writes, held against the rules of the Trace Event Format.
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

#include "tools/replay.h"
#include "tools/report.h"
#include "tools/trace.h"
#include "tools/trace_event_report.h"

namespace sensorvela::replay {
namespace {

using nlohmann::json;

// What a viewer needs of an event, by phase.
const std::map<std::string, std::vector<std::string>> kRequiredKeys = {
    {"M", {"name", "pid", "tid", "args"}},
    {"X", {"name", "cat", "pid", "tid", "ts", "dur"}},
    {"I", {"name", "pid", "tid", "ts", "s", "cat"}},
    {"C", {"name", "pid", "ts", "args"}}};

/// Nanoseconds, as the microseconds are meant.
std::int64_t Ns(const json& microseconds) {
  return std::llround(microseconds.get<double>() * 1000);
}

/// What has been seen of one track or counter.
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
  std::string trace_events;
};

Written Replayed(const std::string& path) {
  std::stringstream printed;
  std::ostringstream trace_events;
  Replay({MakeJsonLinesReport(printed).get(), MakeTraceEventReport(trace_events).get()}, false)
      .Run(ParseTrace(path, ReadInput(path)));
  json last;
  for (std::string line; std::getline(printed, line);) last = json::parse(line);
  return {last, trace_events.str()};
}

TEST(TraceEventTest, KeepsTheFormatsRulesAndTheSummarysCounts) {
  for (const std::string name :
       {"examples/errors", "examples/first_generation", "tests/traces/no_supplier",
        "tests/traces/outage", "tests/traces/outside_atom", "tests/traces/refused_enable",
        "tests/traces/second_generation", "tests/traces/trains",
        "tests/traces/trains_to_their_end"}) {
    SCOPED_TRACE(name);
    const auto [summary, trace_events] = Replayed(SENSORVELA_SOURCE_DIR "/" + name + ".jsonl");
    auto marks = CheckedMarks(json::parse(trace_events).at("traceEvents"));
    EXPECT_EQ(marks["delivered"], summary.at("delivered"));
    EXPECT_EQ(marks["failed"], summary.at("failed"));
    EXPECT_EQ(marks["dropped"], summary.at("dropped"));
    EXPECT_EQ(marks["blocked"], summary.at("blocked_by_cap"));
  }
}

}  // namespace
}  // namespace sensorvela::replay
