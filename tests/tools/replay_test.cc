#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tests/library/test_support.h"
#include "tests/tools/gzipped.h"
#include "tests/tools/trace_files.h"
#include "tools/report/json_lines_report.h"
#include "tools/report/progress.h"
#include "tools/report/repeat_folder.h"
#include "tools/report/samples_by_latency.h"
#include "tools/report/selection.h"
#include "tools/report/text_report.h"
#include "tools/run/replay.h"
#include "tools/trace/event_kinds.h"
#include "tools/trace/field_reader.h"
#include "tools/trace/trace.h"
#include "tools/viewer/viewer_observer.h"

namespace sensorvela::tools {
namespace {

using testing::Content;
using testing::Gzipped;
using testing::SourcePath;

std::string Complaint(const std::string& trace) {
  try {
    const Trace checked("t", Input(trace));
  } catch (const TraceError& error) {
    return error.what();
  }
  return "";
}

/// Stands in a complaint for the names of all events.
constexpr std::string_view kEvents = "@EVENTS@";

std::string NamesOfEvents() {
  std::string names;
  for (const EventKind& kind : EventKinds()) {
    names += (names.empty() ? "" : ", ") + std::string(kind.name);
  }
  return names;
}

TEST(TraceTest, SaysWhatIsWrongWithATraceAndWhere) {
  std::istringstream cases(Content(SourcePath("tests/traces/bad_traces.jsonl")));
  int count = 0;
  for (std::string line; std::getline(cases, line); ++count) {
    SCOPED_TRACE(line);
    const auto test = nlohmann::json::parse(line);
    std::string complaint = test.at("complaint");
    if (const auto at = complaint.find(kEvents); at != std::string::npos) {
      complaint.replace(at, kEvents.size(), NamesOfEvents());
    }
    EXPECT_EQ(Complaint(test.at("trace")), complaint);
  }
  EXPECT_GT(count, 40);
}

TEST(TraceTest, RefusesBytesThatNoTraceShouldHave) {
  const std::string malformed = ": expected one JSON object";
  EXPECT_EQ(Complaint("\xff\x1b"), "t:1: malformed JSON at column 1" + malformed);
  EXPECT_EQ(Complaint(std::string("{\"at_ns\":0,\"event\":\"engine_start\"}\0{}", 37)),
            "t:1: a NUL byte at column 35: expected one JSON object");
  EXPECT_EQ(Complaint("\xef\xbb\xbf{}"), "t:1: a byte order mark: expected one JSON object");
  const std::string deep(100'000, '[');
  EXPECT_EQ(Complaint(deep), "t:1: malformed JSON at column 100001" + malformed);
  EXPECT_EQ(Complaint(deep + std::string(100'000, ']')),
            "t:1: a JSON value of type array: expected an object");
}

// Two members, and a line longer than any buffer.
TEST(TraceTest, InflatesGzipData) {
  const std::string start = "{\"at_ns\":5,\"event\":\"engine_start\"}\n{\"at_ns\":6,";
  const std::string text(900'000, 'x');
  const std::string note = R"("event":"note","text":")" + text + "\"}\n";
  const std::string whole = Gzipped(start) + Gzipped(note);
  const Trace trace("t", Input(whole));
  const EventSource next = trace.Events();
  Event event;
  ASSERT_TRUE(next(event) && next(event));
  EXPECT_EQ(event.info->line, 2u);
  EXPECT_EQ(event.info->fields, Json({{"text", text}}));
  EXPECT_FALSE(next(event));

  EXPECT_EQ(Complaint(Gzipped(start) + Gzipped(std::string(2'000'000, ' ')) + Gzipped(note)),
            "t:2: a line of more than 1048576 bytes: expected one event a line");

  const std::string cut = "the gzip data ends too early: expected all of a gzip file";
  const std::string damaged = "the gzip data is damaged: expected an undamaged gzip file";
  const std::size_t first = Gzipped(start).size();
  EXPECT_EQ(Complaint(whole.substr(0, 3)), "t:1: " + cut);
  EXPECT_EQ(Complaint(whole.substr(0, first - 1)), "t:2: " + cut);
  EXPECT_EQ(Complaint(whole.substr(0, whole.size() - 1)), "t:3: " + cut);
  EXPECT_EQ(Complaint(whole + "more"), "t:3: " + damaged);
  std::string changed = whole;
  changed[first - 5] ^= 1;  // In the checksum.
  EXPECT_EQ(Complaint(changed), "t:2: " + damaged);
}

TEST(TraceTest, RefusesAFileThatChangesBetweenItsCheckAndItsRun) {
  const std::string path = ::testing::TempDir() + "changing.jsonl";
  const auto write = [&](const std::string& text) { std::ofstream(path) << text; };
  write("{\"at_ns\":5,\"event\":\"engine_start\"}\n{\"at_ns\":6,\"event\":\"end\"}\n");
  const Trace trace(path, OpenTrace(path));
  write("{\"at_ns\":5,\"event\":\"engine_start\"}\n{\"at_ns\":4,\"event\":\"end\"}\n");
  std::ostringstream printed;
  try {
    Replay({MakeViewerObserver(printed, trace.sensor_names()).get()}, false).Run(trace.Events());
    ADD_FAILURE() << "the run has an end";
  } catch (const TraceError& error) {
    EXPECT_EQ(error.what(),
              path + ":2: time goes back from 5 (line 1) to 4: expected no earlier instant");
  }
  std::filesystem::remove(path);
}

class ReplayTest : public ::testing::TestWithParam<std::string> {};

/// What an event queues is what the service receives.
struct CausesAreRight : RunObserver {
  void OnAtom(Instant /*at*/, const AtomFact& fact) override {
    if (fact.atom == nullptr || fact.cause.event == nullptr) return;
    EXPECT_EQ(fact.cause.atom_id(), fact.atom->atomId) << "line " << fact.cause.line();
  }
};

// The files beside a trace have what `sensorvela-replay --log` prints for it, in both formats, and
// for some traces what it prints with `--wide`, and what `--trace-out` writes.
TEST_P(ReplayTest, ShowsWhatTheTraceMustGive) {
  const std::string path = SourcePath(GetParam());
  std::ostringstream text;
  std::ostringstream wide;
  std::ostringstream json_lines;
  std::ostringstream viewer;
  const Trace trace(path, OpenTrace(path + ".jsonl"));
  const SensorNames& names = trace.sensor_names();
  CausesAreRight causes;
  Replay({&causes, MakeTextReport(text, names).get(),
          MakeTextReport(wide, names, {.wide = true}).get(),
          MakeJsonLinesReport(json_lines, names).get(), MakeViewerObserver(viewer, names).get()},
         true)
      .Run(trace.Events());
  EXPECT_EQ(text.str(), Content(path + ".text"));
  EXPECT_EQ(json_lines.str(), Content(path + ".json_lines"));
  if (std::filesystem::exists(path + ".wide")) {
    EXPECT_EQ(wide.str(), Content(path + ".wide"));
  }
  if (std::filesystem::exists(path + ".viewer")) {
    EXPECT_EQ(viewer.str(), Content(path + ".viewer"));
  }
}

INSTANTIATE_TEST_SUITE_P(Traces, ReplayTest, ::testing::ValuesIn(testing::TracesIn("tests/traces")),
                         [](const auto& test) { return testing::TraceName(test.param); });

TEST(TraceTest, KnowsWhenTheRunEnds) {
  const std::string train = R"({"at_ns":5,"event":"engine_start"}
{"at_ns":7,"event":"samples","sensor_high":1,"sensor_low":1,"count":5,"interval_ns":100,)"
                            R"("latency_ns":30,"gap_every":2,"gap_ns":1000}
)";
  const std::map<std::string, int> kCases = {{"", 7 + 4 * 100 + 2 * 1000 + 30},
                                             {R"({"at_ns":2436,"event":"time_passes"})", 2437},
                                             {R"({"at_ns":2438,"event":"time_passes"})", 2438},
                                             {R"({"at_ns":8,"event":"end"})", 8}};
  for (const auto& [last, end_ns] : kCases) {
    EXPECT_EQ(Trace("t", Input(train + last)).run_end().count(), end_ns) << last;
  }
  const Trace day("t", OpenTrace(SourcePath("examples/one_day.jsonl")));
  EXPECT_EQ(day.run_end(), std::chrono::hours(24));
}

TEST(RefusedThreadTest, ARunFailsAndLeavesRoomForTheNext) {
  struct RefuseAtTheEnd : RunObserver {
    void OnNote(Instant /*at*/, std::string_view /*text*/) override { refused.emplace(); }
    std::optional<testing::RefusedThreads> refused;
  } observer;
  const Trace trace("t", Input(R"({"at_ns":0,"event":"engine_start"}
{"at_ns":0,"event":"firmware_state","subject_id":1,"state":1,"detail_code":1}
{"at_ns":1,"event":"note","text":"The engine waits for the service, and a thread must end that wait."}
)"));
  EXPECT_THROW(Replay({&observer}, false).Run(trace.Events()), std::system_error);
  observer.refused.reset();
  Replay({}, false).Run(trace.Events());
}

// What the recorded engine did not get to does not happen, whatever the run's engine is about to
// do.
TEST(RecordingTest, EndsWhereAHostWasKilledDuringAnUpload) {
  for (const std::string supplier : {"first", "second"}) {
    for (const bool is_found : {true, false}) {
      const Trace trace("t", Input(R"({"at_ns":0,"event":"recording","version":1}
{"at_ns":0,"event":"engine_start","supplier":")" +
                                   supplier + R"("}
{"at_ns":1,"event":"sensor_disabled","sensor_high":1,"sensor_low":1}
{"at_ns":2,"event":")" + (is_found ? "lookup_found" : "lookup_found_none") +
                                   R"(","reports":0}
{"at_ns":3,"event":"cycle_ended"}
{"at_ns":4,"event":"sensor_disabled","sensor_high":1,"sensor_low":1}
)"));
      struct : RunObserver {
        void OnRunEnd(Instant /*at*/, const Summary& end) override { summary = end; }
        Summary summary;
      } last;
      Replay({&last}, false).Run(trace.Events());
      EXPECT_EQ(last.summary.delivered, is_found ? 1u : 0u) << supplier;
      EXPECT_EQ(last.summary.dropped, is_found ? 1u : 2u) << supplier;
      EXPECT_EQ(last.summary.cycles_ended, 1u) << supplier;
    }
  }
}

// The first drain takes what was queued before it, and logs once that it found no service.
TEST(RecordingTest, LogsEachLookupThatFoundNoneOnce) {
  struct : RunObserver {
    void OnLogLine(Instant /*at*/, int /*priority*/, std::string_view /*tag*/,
                   std::string_view text) override {
      if (text.ends_with("Atoms are dropped.")) ++lines;
    }
    void OnRunEnd(Instant /*at*/, const Summary& end) override { summary = end; }
    int lines = 0;
    Summary summary;
  } last;
  const Trace trace("t", Input(R"({"at_ns":0,"event":"recording","version":1}
{"at_ns":0,"event":"engine_start","supplier":"none"}
{"at_ns":1,"event":"firmware_state","subject_id":1,"state":3,"detail_code":0}
{"at_ns":2,"event":"lookup_found_none","reports":0}
{"at_ns":3,"event":"end","reports":0}
)"));
  Replay({&last}, true).Run(trace.Events());
  EXPECT_EQ(last.lines, 1);
  EXPECT_EQ(last.summary.dropped, 1u);
  EXPECT_EQ(last.summary.lost_in_buffer, std::nullopt) << "a recording does not tell";
}

// A changed bit of a whole recording is reported, or changes nothing: one in a header's time, say.
TEST(RecordingTest, SeesDamageAnywhereInGzipData) {
  const std::string recording = R"({"at_ns":0,"event":"recording","version":1}
{"at_ns":0,"event":"engine_start","supplier":"none"}
{"at_ns":1,"event":"firmware_state","subject_id":1,"state":3,"detail_code":123456789}
{"at_ns":2,"event":"lookup_found","reports":0}
{"at_ns":3,"event":"end","reports":1}
)";
  const auto atoms = [](const std::string& data) {
    struct : RunObserver {
      void OnAtom(Instant /*at*/, const AtomFact& fact) override {
        if (fact.atom != nullptr) texts += testkit::AtomText(*fact.atom);
      }
      std::string texts;
    } observer;
    const Trace trace("t", Input(data));
    Replay({&observer}, false).Run(trace.Events());
    return trace.cut() + observer.texts;
  };
  const std::string whole = Gzipped(recording);
  const std::string sent = atoms(whole);
  std::size_t unseen = 0;
  for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
    std::string changed = whole;
    changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
    try {
      const std::string changed_sent = atoms(changed);
      if (changed_sent.starts_with("t:")) continue;  // Cut.
      ++unseen;
      EXPECT_EQ(changed_sent, sent) << "byte " << bit / 8 << ", bit " << bit % 8;
    } catch (const TraceError&) {
      continue;
    }
  }
  EXPECT_LT(unseen, 60u);  // The header has 49 bits that say nothing of the text.
  EXPECT_THROW(atoms(whole + "rubbish"), TraceError);
  EXPECT_THROW(atoms(recording + "rubbish"), TraceError);
}

TEST(LatencyBarsTest, RoundNoShareToNothingOrToAll) {
  const auto shares = [](std::array<std::uint64_t, 5> bands) {
    std::istringstream lines(LatencyBars({.bands = bands}));
    std::string all;
    for (std::string line; std::getline(lines, line);) all += line.substr(77) + '|';
    return all;
  };
  EXPECT_EQ(shares({0, 7, 0, 0, 0}), "|  100.0 %||||");
  EXPECT_EQ(shares({9999, 1, 0, 0, 0}), "  >99.9 %|   <0.1 %||||");
  EXPECT_EQ(shares({9994, 5, 1, 0, 0}), "   99.9 %|   <0.1 %|   <0.1 %|||");
  EXPECT_EQ(shares({0, 0, 10, 0, 9990}), "||    0.1 %||   99.9 %|");
  EXPECT_EQ(LatencyBars({}), "");
}

/// What a folder passes on of lines that are given as words, one a second.
std::string Folded(const std::string& words) {
  std::string passed;
  RepeatFolder folder([&](const ReportLine& line) { passed += line.text + line.count + '\n'; });
  std::istringstream lines(words);
  std::chrono::seconds at(0);
  for (std::string word; lines >> word; ++at) folder.Add({.at = at, .text = word});
  folder.Flush();
  return passed;
}

TEST(RepeatFolderTest, FoldsRepeatsAndNothingElse) {
  EXPECT_EQ(Folded(""), "");
  EXPECT_EQ(Folded("a b a c"), "a\nb\na\nc\n");
  EXPECT_EQ(Folded("a a a b"), "a  (3 times, until 00:00:02)\nb\n");
  EXPECT_EQ(Folded("a b a b a b c"), "a\nb\n... the last 2 lines 2 more times until 00:00:05\nc\n");
  // A turn that is not complete, and one that only begins like another.
  EXPECT_EQ(Folded("a b a b a"), "a\nb\n... the last 2 lines 1 more time until 00:00:03\na\n");
  EXPECT_EQ(Folded("a b c d a b c e"), "a\nb\nc\nd\na\nb\nc\ne\n");
  EXPECT_EQ(Folded("a b c d a b c d"),
            "a\nb\nc\nd\n... the last 4 lines 1 more time until 00:00:07\n");
  // The count of a line is a part of it.
  EXPECT_EQ(Folded("a b b a b a b b"),
            "a\nb  (2 times, until 00:00:02)\na\nb\na\n"
            "b  (2 times, until 00:00:07)\n");
}

TEST(SelectionTest, TakesSensorsAndAtomsByNameAndByNumber) {
  SensorNames names;
  names.Set({16, 1}, "accelerometer");
  names.Set({4294967295, -1}, "42");
  Selection only;
  for (const char* unknown : {"", "light", "16", "/", "16/", "16/1x", "-1/1", "1/4294967296",
                              "accelerometer (16/2)", "light (16/1)"}) {
    EXPECT_EQ(Selection().Add(unknown, names), unknown == std::string_view("16")) << unknown;
  }
  EXPECT_TRUE(only.Summarizes({1, 1}));
  EXPECT_TRUE(only.Add("42", names) && only.Summarizes({4294967295, -1}));
  EXPECT_TRUE(only.Add("16/1", names) && only.Summarizes({16, 1}));
  EXPECT_FALSE(only.Summarizes({1, 1}));
}

TEST(SelectionTest, HasLostAtomsOfItsKindsAndSensorsAndThoseOfNoKnownKind) {
  SensorNames names;
  names.Set({16, 1}, "accelerometer");
  Selection only;
  EXPECT_TRUE(only.Add("SensorHalErrorDetected", names));
  EXPECT_TRUE(only.Has(100024, std::nullopt));
  EXPECT_FALSE(only.Has(100025, std::nullopt));
  EXPECT_TRUE(only.Has(std::nullopt, std::nullopt));
  EXPECT_TRUE(only.Add("accelerometer (16/1)", names));
  EXPECT_TRUE(only.Has(100025, {{16, 1}}));
}

/// The text that each step of a long run writes to the terminal.
std::vector<std::string> ShownOfALongRun(bool shares_terminal) {
  std::chrono::steady_clock::time_point now;
  std::ostringstream terminal;
  Progress progress(terminal, shares_terminal, [&] { return now; });
  std::vector<std::string> shown;
  const auto after = [&](std::chrono::milliseconds time, int times, const auto& step) {
    now += time;
    for (int i = 0; i < times; ++i) step();
    shown.push_back(terminal.str());
    terminal.str("");
  };
  const auto read = [&] { progress.Read(9, 20); };
  const auto run = [&] { progress.OnSample(std::chrono::minutes(90), {1, 1}, {0, false}); };
  after(std::chrono::milliseconds(999), 2000, read);
  after(std::chrono::milliseconds(1), 2000, read);
  after({}, 1, [&] { progress.DoneReading(std::chrono::hours(6)); });
  after(std::chrono::seconds(1), 2000, run);
  after({}, 1, [&] { progress.OnAtom({}, {{}, {}, nullptr, {}, "", {}}); });
  after({}, 1, [&] { progress.OnRunEnd({}, {}); });
  return shown;
}

TEST(ProgressTest, ShowsARunThatTakesLong) {
  const std::string erase = "\r\x1b[K";
  const std::string reads = erase + "read 45 %";
  const std::string runs = erase + "replayed to 01:30:00 of 06:00:00";
  using Shown = std::vector<std::string>;
  EXPECT_EQ(ShownOfALongRun(false), Shown({"", reads, erase, runs, "", erase}));
  EXPECT_EQ(ShownOfALongRun(true), Shown({"", reads, erase, runs, erase, ""}));
}

// Compares the headings with the names of the kinds, and the first three cells of each row with
// their fields.
TEST(TraceFormatTest, IsWhatTheDocumentSays) {
  std::ostringstream read;
  for (const EventKind& kind : EventKinds()) {
    FieldReader fields;
    kind.read(fields, {});
    read << "## `" << kind.name << "`\n";
    for (const auto& [name, optional, expected] : fields.fields()) {
      read << "| `" << name << "` | " << (optional ? "no" : "yes") << " | " << expected << " |\n";
    }
  }
  std::istringstream document(Content(SourcePath("docs/trace-format.md")));
  std::string documented;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## `")) documented += line + '\n';
    if (!line.starts_with("| `")) continue;
    documented += line.substr(0, line.rfind(" | ", line.size() - 3)) + " |\n";
  }
  EXPECT_EQ(documented, read.str());
}

TEST(TraceFormatTest, HasAnExampleOfEachKindThatRuns) {
  std::istringstream document(Content(SourcePath("docs/trace-format.md")));
  std::string kind;
  std::string example;
  std::size_t examples = 0;
  bool is_example = false;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## `")) kind = line.substr(4, line.size() - 5);
    if (is_example && line == "```") {
      SCOPED_TRACE(example);
      ++examples;
      EXPECT_NE(example.find("\"event\": \"" + kind + '"'), std::string::npos);
      std::ostringstream printed;
      const Trace trace("example", Input(example));
      Replay({MakeTextReport(printed, trace.sensor_names()).get()}, false).Run(trace.Events());
      is_example = false;
    }
    if (is_example) example += line + '\n';
    if (line == "```jsonl") {
      is_example = true;
      example.clear();
    }
  }
  EXPECT_EQ(examples, EventKinds().size());
}

}  // namespace
}  // namespace sensorvela::tools
