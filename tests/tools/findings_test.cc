#include <gtest/gtest.h>

#include <cstddef>
#include <istream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/trace_files.h"
#include "tools/facts/finding.h"
#include "tools/report/text_report.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::tools {
namespace {

using testing::Content;
using testing::SourcePath;

/// What `sensorvela-replay --findings` prints.
std::string FindingsOf(const std::string& lines) {
  std::ostringstream out;
  const Trace trace("t", Input(lines));
  Replay({MakeTextReport(out, trace.sensor_names(), {.summary_only = true, .findings_only = true})
              .get()},
         false)
      .Run(trace.Events());
  return out.str();
}

/// The names at the beginnings of the lines.
std::set<std::string> Names(const std::string& findings) {
  std::set<std::string> names;
  std::istringstream lines(findings);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(' ')) names.insert(line.substr(0, line.find(' ')));
  }
  return names;
}

/// A section of the document.
struct Section {
  std::string name;
  std::string text = {};
  std::string trace = {};
  std::string output = {};
};

/// The lines of a block, up to its end. "(1200 times) LINE" stands for as many lines.
std::string Block(std::istream& lines) {
  std::string block;
  for (std::string line; std::getline(lines, line) && line != "```";) {
    int times = 1;
    if (line.starts_with('(')) {
      times = std::stoi(line.substr(1));
      line.erase(0, line.find(") ") + 2);
    }
    for (int i = 0; i < times; ++i) block += line + '\n';
  }
  return block;
}

std::vector<Section> Sections() {
  std::vector<Section> sections;
  std::istringstream document(Content(SourcePath("docs/findings.md")));
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## `")) {
      sections.push_back({.name = line.substr(4, line.size() - 5)});
    } else if (sections.empty()) {
      continue;
    } else if (line == "```jsonl") {
      sections.back().trace = Block(document);
    } else if (line == "```") {
      sections.back().output = Block(document);
    } else {
      sections.back().text += line + ' ';
    }
  }
  return sections;
}

// Each kind has a section with its threshold, and a trace in which it is found, and nothing else.
TEST(FindingsTest, AreWhatTheDocumentSays) {
  const std::vector<Section> sections = Sections();
  ASSERT_EQ(sections.size(), FindingKinds().size());
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const FindingInfo& info = FindingKinds()[i];
    SCOPED_TRACE(info.name);
    EXPECT_EQ(sections[i].name, info.name);
    EXPECT_NE(sections[i].text.find(" When " + std::string(info.threshold) + ". "),
              std::string::npos);
    EXPECT_EQ(FindingsOf(sections[i].trace), sections[i].output);
    EXPECT_EQ(Names(sections[i].output), std::set<std::string>({info.name}));
  }
}

constexpr char kStart[] = R"({"at_ns":0,"event":"service_registered"}
{"at_ns":0,"event":"engine_start"}
{"at_ns":0,"event":"sensor_enabled","sensor_high":1,"sensor_low":1,"period_ns":20000000}
)";

std::string SampleAt(long long at_ms, long long timestamp_ms) {
  return R"({"at_ns":)" + std::to_string(at_ms) +
         R"(000000,"event":"sample","sensor_high":1,"sensor_low":1,"timestamp_ns":)" +
         std::to_string(timestamp_ms) + (timestamp_ms == 0 ? "" : "000000") + "}\n";
}

std::string EventAt(long long at_ms, const std::string& rest) {
  return R"({"at_ns":)" + std::to_string(at_ms) + R"(000000,"event":")" + rest + "}\n";
}

// What a healthy host does, too.
TEST(FindingsTest, RaiseNoFalseAlarm) {
  const std::string sensor = R"(","sensor_high":1,"sensor_low":1)";
  // Samples are kept while the device sleeps for an hour, and come at its end within 200 ms.
  std::string batch = kStart + EventAt(1000, R"(suspended","for_ns":3600000000000)");
  for (int i = 0; i < 2000; ++i) batch += SampleAt(3601000 + i / 10, 1000 + i * 20LL);
  // A queue of 15 s of samples, several times.
  std::string queued = kStart;
  for (int i = 0; i < 3000; ++i) queued += SampleAt((i / 750 + 1) * 15000LL + 10, (i + 1) * 20LL);
  // A sensor that has samples only when something changes.
  std::string changes = kStart;
  std::mt19937 random(1);
  int changes_ms = 0;
  for (int i = 0; i < 100; ++i) {
    changes_ms += 20 + static_cast<int>(random() % 6000);
    changes += SampleAt(changes_ms + 5, changes_ms);
  }
  std::string in_flight = kStart;
  for (int i = 1; i < 50; ++i) in_flight += SampleAt(20LL * i + 5, 20LL * i);
  in_flight += EventAt(1001, "sensor_disabled" + sensor) + SampleAt(1005, 1000);
  std::string rates = in_flight;
  for (int i = 1; i < 6; ++i) {
    const long long at = 10000LL * i;
    const long long period = i % 2 == 0 ? 5 : 200;
    rates += EventAt(
        at, "sensor_enabled" + sensor + R"(,"period_ns":)" + std::to_string(period) + "000000");
    for (int j = 1; j < 20; ++j) rates += SampleAt(at + j * period + 3, at + j * period);
    rates += EventAt(at + 20 * period, "sensor_disabled" + sensor);
  }
  const std::string outage =
      in_flight + EventAt(2000, "service_unregistered\"") +
      EventAt(3000, R"(firmware_state","subject_id":1,"state":1,"detail_code":1)") +
      EventAt(600000, "service_registered\"") + EventAt(601000, "end\"");
  for (const std::string& healthy : {batch, queued, changes, in_flight, rates, outage}) {
    EXPECT_EQ(FindingsOf(healthy), "") << healthy.substr(0, 2000);
  }
}

// The traces of the tests and the examples have these, and nothing else: their stories tell of
// each.
TEST(FindingsTest, AreTrueOfEachTraceOfTheTree) {
  const std::map<std::string, std::set<std::string>> kExpected = {
      {"bad_days", {"dropped_refused", "destroyed_in_outage"}},
      {"before_the_start", {"report_failed", "report_without_status"}},
      {"dropped_enable",
       {"dropped_refused", "sampled_while_disabled", "disabled_twice", "too_slow", "rate_jumps"}},
      {"dropped_upload", {"dropped_refused", "destroyed_in_outage"}},
      {"outage",
       {"dropped_lookup_failed", "destroyed_in_outage", "still_queued", "report_failed",
        "report_without_status", "error_storm", "diagnostics_missing"}},
      {"own_process", {"dropped_lookup_failed", "lost_in_buffer", "process_slow"}},
      {"refused_enable", {"report_failed", "disabled_twice", "bad_period"}},
      {"trains", {"never_enabled", "sampled_while_disabled", "re_enabled", "disabled_twice"}},
      {"trains_to_their_end", {"sampled_while_disabled", "disabled_twice"}},
      {"errors",
       {"dropped_lookup_failed", "report_failed", "report_without_status", "error_storm"}}};
  for (const std::string folder : {"tests/traces", "examples"}) {
    for (const std::string& path : testing::TracesIn(folder)) {
      const auto expected = kExpected.find(testing::TraceName(path));
      EXPECT_EQ(Names(FindingsOf(Content(SourcePath(path + ".jsonl")))),
                expected == kExpected.end() ? std::set<std::string>() : expected->second)
          << path;
    }
  }
}

}  // namespace
}  // namespace sensorvela::tools
