// Checks the data of the page that `sensorvela-replay --picture` writes. The check `picture` opens
// the page in a browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/trace_files.h"
#include "tools/picture/page.h"
#include "tools/picture/picture_observer.h"
#include "tools/picture/time_bins.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::tools {
namespace {

using nlohmann::json;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using ::testing::HasSubstr;
using ::testing::Not;

/// The JSON of a page that shows the trace.
std::string TextOf(const Trace& trace) {
  std::ostringstream out;
  const auto picture = MakePictureObserver(out, trace.sensor_names(), "<b>.jsonl",
                                           trace.run_begin(), trace.run_end());
  Replay({picture.get()}, false).Run(trace.Events());
  const std::string page = out.str();
  return page.substr(kPageBeforeData.size(),
                     page.size() - kPageBeforeData.size() - kPageAfterData.size());
}

/// The count that the page shows first of all under a caption that begins so.
json CountOf(const json& data, const std::string& caption) {
  for (const json& count : data.at("counts")) {
    if (count.at(0).get<std::string>().starts_with(caption)) return count.at(1);
  }
  return {};
}

json DataOf(const std::string& lines) { return json::parse(TextOf(Trace("t", Input(lines)))); }

std::uint64_t Shown(const json& atoms) {
  std::uint64_t shown = 0;
  for (const json& atom : atoms.at("items")) shown += atom.at(3).get<std::uint64_t>();
  return shown;
}

class PictureTest : public ::testing::TestWithParam<std::string> {};

TEST_P(PictureTest, CountsAsTheEngineDoes) {
  const json data = DataOf(testing::Content(testing::SourcePath(GetParam() + ".jsonl")));
  // What a process's buffer kept is shown as dropped, and counted by itself.
  const std::map<std::string, std::vector<std::string>> kCounts = {
      {"delivered", {"delivered"}},
      {"failed", {"failed"}},
      {"dropped", {"dropped", "lost in buffer", "left in buffer"}},
      {"blocked", {"blocked"}}};
  for (const auto& [outcome, counts] : kCounts) {
    std::uint64_t counted = 0;
    for (const std::string& count : counts) {
      const json number = CountOf(data, count);
      if (!number.is_null()) counted += number.get<std::uint64_t>();
    }
    EXPECT_EQ(Shown(data.at("atoms").at(outcome)), counted) << outcome;
  }
  for (const json& sensor : data.at("sensors").at("items")) {
    SCOPED_TRACE(sensor.dump());
    std::uint64_t samples = 0;
    std::uint64_t late = 0;
    std::array<std::uint64_t, 5> bands = {};
    for (const json& run : sensor.at("bins")) {
      const std::uint64_t bins = run.at(1);
      late += bins * run.at(2).get<std::uint64_t>();
      for (std::size_t i = 3; i < run.size(); ++i) {
        bands.at(i - 3) += bins * run[i].get<std::uint64_t>();
        samples += bins * run[i].get<std::uint64_t>();
      }
    }
    EXPECT_EQ(samples, sensor.at("samples"));
    EXPECT_EQ(json(bands), sensor.at("bands"));
    EXPECT_EQ(late, sensor.at("late"));
  }
}

const auto kTestName = [](const auto& test) { return testing::TraceName(test.param); };
INSTANTIATE_TEST_SUITE_P(Traces, PictureTest,
                         ::testing::ValuesIn(testing::TracesIn("tests/traces")), kTestName);
INSTANTIATE_TEST_SUITE_P(Examples, PictureTest, ::testing::ValuesIn(testing::TracesIn("examples")),
                         kTestName);

TEST(PictureDataTest, SaysWhenTheServiceIsAwayAndTheDeviceSleeps) {
  const json data = DataOf(R"({"at_ns": 1000, "event": "engine_start"}
{"at_ns": 3000, "event": "service_registered"}
{"at_ns": 5000, "event": "service_refused"}
{"at_ns": 5000, "event": "service_unregistered"}
{"at_ns": 6000, "event": "service_allowed"}
{"at_ns": 6500, "event": "prox"}
{"at_ns": 7000, "event": "service_registered"}
{"at_ns": 8000, "event": "suspended", "for_ns": 2000}
{"at_ns": 11000, "event": "service_unregistered"}
{"at_ns": 12000, "event": "end"}
)");
  EXPECT_EQ(data.at("begin_ns"), "1000");
  EXPECT_EQ(data.at("length_ns"), 11000);
  EXPECT_EQ(data.at("absences").at("items"),
            json::parse(R"([[0,2000,"not_registered"],[4000,6000,"refused"],
                        [10000,11000,"not_registered"]])"));
  EXPECT_EQ(data.at("suspended").at("items"), json::parse("[[7000,9000]]"));
  EXPECT_EQ(data.at("stays").at("items"),
            json::parse(R"([[0, 2000, "waiting", 0], [2000, 5500, "asleep", 0],
                            [5500, 6000, "waiting", 1], [6000, 11000, "asleep", 0]])"));
}

// A recording has no events of the service, but lookups that waited.
TEST(PictureDataTest, SaysWhenTheServiceOfARecordingIsAway) {
  const json data = DataOf(R"({"at_ns": 0, "event": "recording", "version": 1}
{"at_ns": 0, "event": "engine_start"}
{"at_ns": 0, "event": "lookup_found", "reports": 0}
{"at_ns": 1000, "event": "prox"}
{"at_ns": 2000, "event": "lookup_waits"}
{"at_ns": 3000, "event": "prox"}
{"at_ns": 5000, "event": "lookup_found", "reports": 0}
{"at_ns": 9000, "event": "end", "reports": 2}
)");
  EXPECT_EQ(data.at("absences").at("items"), json::parse(R"([[2000,5000,"not_registered"]])"));
}

TEST(PictureDataTest, CannotEndItsScriptElement) {
  const std::string lines = R"({"at_ns": 0, "event": "engine_start"}
{"at_ns": 0, "event": "sensor_name", "sensor_high": 1, "sensor_low": 1, "name": "<!--<script>"}
{"at_ns": 0, "event": "sensor_enabled", "sensor_high": 1, "sensor_low": 1, "period_ns": 1}
{"at_ns": 0, "event": "note", "text": "</script>&\u2028"}
)";
  const std::string data = TextOf(Trace("t", Input(lines)));
  for (const char* markup : {"<", ">", "&", "\xe2\x80\xa8"}) {
    EXPECT_THAT(data, Not(HasSubstr(markup)));
  }
  const json parsed = json::parse(data);
  EXPECT_EQ(parsed.at("title"), "<b>.jsonl");
  EXPECT_EQ(parsed.at("sensors").at("items").at(0).at("label"), "<!--<script> (1/1)");
  EXPECT_EQ(parsed.at("notes").at("items").at(0).at(1), "</script>&\\u2028");
}

// Hours of a hundred sensors: in each second, three atoms, a note and a blocked error.
TEST(PictureDataTest, ThinsALongRunToItsEnd) {
  constexpr std::uint64_t kRounds = 12'000;
  std::ostringstream lines;
  lines << R"({"at_ns": 0, "event": "engine_start"}
{"at_ns": 0, "event": "service_registered"}
{"at_ns": 0, "event": "hal_error", "sensor_high": 1, "sensor_low": 1, "call": 1, "error": 1, "count": 1000000}
)";
  for (std::uint64_t i = 1; i <= kRounds; ++i) {
    const std::string at = R"({"at_ns": )" + std::to_string(i) + R"(000000000, "event": ")";
    const std::string sensor =
        R"("sensor_low": 1, "sensor_high": )" + std::to_string(i % 20 == 0 ? i % 2000 / 20 : 0);
    lines << at << R"(sensor_enabled", "period_ns": 1, )" << sensor << "}\n"
          << at << R"(sample", "timestamp_ns": 0, )" << sensor << "}\n"
          << at << R"(sensor_disabled", )" << sensor << "}\n"
          << at << R"(hal_error", "call": 1, "error": 1, )" << sensor << "}\n"
          << at << R"(note", "text": ")" << std::string(i % 100 == 0 ? 5000 : 1, 'x') << "\"}\n";
  }
  const json data = DataOf(lines.str());
  const json& atoms = data.at("atoms");
  const json& sensors = data.at("sensors");
  const json& lane = sensors.at("items").at(0);
  struct Case {
    const json& list;
    std::uint64_t total;
    std::size_t most;
  };
  const std::uint64_t spans = lane.at("spans").at("total");
  EXPECT_GT(spans, kRounds * 9 / 10);
  for (const auto& [list, total, most] :
       {Case{atoms.at("delivered"), 3 * kRounds + 10, 6000},
        Case{atoms.at("blocked"), kRounds + 999'990, 2000}, Case{data.at("notes"), kRounds, 4000},
        Case{lane.at("spans"), spans, 125}, Case{lane.at("firsts"), spans, 125},
        Case{lane.at("disables"), spans, 125}}) {
    const json& last = list.at("items").back();
    SCOPED_TRACE(last.dump());
    EXPECT_EQ(list.at("total"), total);
    EXPECT_EQ(list.at("thinned"), true);
    EXPECT_LE(list.at("items").size(), most);
    EXPECT_GT(list.at("items").size(), most / 4);
    EXPECT_GT(last.at(0), data.at("length_ns").get<std::int64_t>() * 97 / 100);
  }
  EXPECT_EQ(Shown(atoms.at("delivered")), CountOf(data, "delivered"));
  EXPECT_EQ(Shown(atoms.at("blocked")), CountOf(data, "blocked"));
  EXPECT_EQ(sensors.at("items").size(), 64U);
  EXPECT_EQ(sensors.at("omitted"), 36);
  EXPECT_LT(data.dump().size(), 1'800'000U);
}

TEST(TimeBinsTest, AreFewAndOnTheClock) {
  struct Case {
    TimeBins::Instant begin, end;
    std::chrono::nanoseconds width;
    std::size_t count;
  };
  for (const Case& c :
       {Case{hours(0), hours(24), minutes(1), 1441}, Case{seconds(90), seconds(90), seconds(1), 1},
        Case{minutes(7) + seconds(3), hours(40), minutes(5), 480},
        Case{hours(0), TimeBins::Instant::max(), hours(2400), 1068}}) {
    const TimeBins bins = BinsFor(c.begin, c.end);
    EXPECT_EQ(bins.width, c.width);
    EXPECT_EQ(bins.count, c.count);
    EXPECT_EQ(bins.IndexOf(c.begin), 0U);
    EXPECT_EQ(bins.IndexOf(c.end), bins.count - 1);
    EXPECT_EQ(bins.IndexOf(bins.begin + bins.width), bins.count > 1 ? 1U : 0U);
  }
}

}  // namespace
}  // namespace sensorvela::tools
