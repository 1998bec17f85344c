#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "atoms/standalone_atoms.h"
#include "tests/test_support.h"
#include "tools/atom_catalogue.h"
#include "tools/replay.h"
#include "tools/report.h"
#include "tools/trace.h"
#include "tools/value_kinds.h"

namespace sensorvela::replay {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using testing::Show;

using MakeReport = std::unique_ptr<Report>(std::ostream&);

std::string Output(const std::string& trace, MakeReport* make_report, bool log) {
  std::ostringstream out;
  const auto report = make_report(out);
  Replay(*report, log).Run(ParseTrace("t", trace));
  return out.str();
}

std::string Complaint(const std::string& trace) {
  try {
    ParseTrace("t", trace);
  } catch (const TraceError& error) {
    return error.what();
  }
  return "";
}

/// One line of a trace.
std::string Line(std::int64_t at_ns, const std::string& event, const std::string& fields = "") {
  return "{\"at_ns\":" + std::to_string(at_ns) + R"(,"event":")" + event + '"' +
         (fields.empty() ? "" : ',' + fields) + "}\n";
}

const std::string kBegin = Line(0, "service_registered") + Line(0, "engine_start");
const std::string kStart = R"({"at_ns":5,"event":"engine_start"})";
const std::string kKinds =
    "engine_start, hal_error, runtime_error, sensor_enabled, sensor_disabled, sample, samples, "
    "first_sample, prox, hal_latency, firmware_state, atom, diagnostics, service_declared, "
    "service_undeclared, service_registered, service_unregistered, service_wait_released, "
    "service_fails, service_silent, time_passes, note, end";

TEST(TraceTest, SaysWhatIsWrongWithATraceAndWhere) {
  const std::string at_ns = ": expected an integer from 0 to 4000000000000000000";
  const std::string at_ns_float = "t:1: field \"at_ns\" is not a plain 64-bit integer" + at_ns;
  const std::string sensor = R"("sensor_high":1,"sensor_low":2,)";
  const std::string train = sensor + R"("count":1000000000,"interval_ns":)";
  const std::string int32 = ": expected an integer from -2147483648 to 2147483647";
  const std::string int64 =
      ": expected an integer from -9223372036854775808 to 9223372036854775807";
  const std::string number =
      R"(: expected a number in a float's range, "NaN", "Infinity" or "-Infinity")";
  const std::string kind =
      ": expected one field, named after its kind: int, long, float, string, bool, ints, longs, "
      "floats, strings, bools, bytes";
  const std::string too_long =
      "a train of samples that lasts too long: expected at most 4000000000000000000 ns from "
      "its first sample to its last";
  const std::vector<std::pair<std::string, std::string>> cases = {
      {" \t\r\n", "t:1: the trace is empty: expected one event a line"},
      {kStart + "\n" + R"({"at_ns":5,)",
       "t:2: malformed JSON at column 12: expected one JSON object"},
      {kStart + kStart, "t:1: malformed JSON at column 35: expected one JSON object"},
      {std::string("\x00\xff\x1b", 3), "t:1: malformed JSON at column 1: expected one JSON object"},
      {std::string(100'000, '['), "t:1: malformed JSON at column 100001: expected one JSON object"},
      {std::string(100'000, '[') + std::string(100'000, ']'),
       "t:1: a JSON value of type array: expected an object"},
      {R"({"at_ns":0})", "t:1: missing field \"event\": expected a string"},
      {R"({"event":7})", "t:1: field \"event\" has type number: expected a string"},
      {R"({"event":"a\u001bb"})", R"(t:1: unknown event "a\u001bb": expected one of )" + kKinds},
      {R"({"event":"end"})", "t:1: missing field \"at_ns\"" + at_ns},
      {R"({"event":"end","at_ns":null})", "t:1: field \"at_ns\" has type null" + at_ns},
      {R"({"event":"end","at_ns":-1})", "t:1: field \"at_ns\" is -1" + at_ns},
      {R"({"event":"end","at_ns":18446744073709551615})",
       "t:1: field \"at_ns\" is 18446744073709551615" + at_ns},
      {R"({"event":"end","at_ns":99999999999999999999})", at_ns_float},
      {R"({"event":"end","at_ns":1.5})", at_ns_float},
      {R"({"event":"end","at_ns":1e999})",
       "t:1: a number far beyond 64 bits: expected no number of that size in any field"},
      {R"({"event":"end","at_ns":0,"count":1})",
       "t:1: unknown field \"count\": expected no others than event at_ns"},
      {R"({"at_ns":0,"event":"end","\u0061t_ns":0})",
       "t:1: duplicate field \"at_ns\": expected each field once"},
      {kStart + "\n" + kStart, "t:2: a second engine_start (the first: line 1): expected one"},
      {kStart + "\n\n" + R"({"at_ns":4,"event":"end"})",
       "t:3: time goes back from 5 (line 1) to 4: expected no earlier instant"},
      {kStart + "\n" + R"({"at_ns":5,"event":"end"})" + "\n" + R"({"at_ns":5,"event":"end"})",
       "t:3: end after the end (line 2): expected end to be the last event"},
      {R"({"at_ns":0,"event":"end"})", "t:1: the trace ends here: expected an engine_start in it"},
      {R"({"at_ns":0,"event":"hal_error","sensor_high":1,"sensor_low":2,"call":3,"error":4})",
       "t:1: hal_error without an engine: expected an engine_start before it"},
      {R"({"at_ns":0,"event":"hal_error","sensor_high":4294967296})",
       "t:1: field \"sensor_high\" is 4294967296: expected an integer from 0 to 4294967295"},
      {R"({"at_ns":0,"event":"service_fails","reports":1000001})",
       "t:1: field \"reports\" is 1000001: expected an integer from 1 to 1000000"},
      {Line(0, "engine_start", R"("supplier":"third")"),
       R"(t:1: field "supplier" is "third": expected one of none, first, second)"},
      {Line(0, "engine_start", R"("supplier":"none")") + Line(0, "diagnostics"),
       "t:2: diagnostics without a supplier: expected an engine_start with one"},
      {Line(0, "engine_start", R"("supplier":"first")") + Line(0, "diagnostics", R"("memory":[])"),
       "t:2: field \"memory\" is no item of a first-generation supplier: expected none but "
       "processor, queue_1, queue_2 and queue_3"},
  };
  for (const auto& [trace, complaint] : cases) EXPECT_EQ(Complaint(trace), complaint);

  const std::vector<std::array<std::string, 3>> second_lines = {
      {"sensor_enabled", sensor + R"("period":1)", "missing field \"period_ns\"" + int64},
      {"sensor_disabled", R"("sensor_high":-1)",
       "field \"sensor_high\" is -1: expected an integer from 0 to 4294967295"},
      {"sample", sensor + R"("timestamp_ns":0,"count":1)",
       "unknown field \"count\": expected no others than event at_ns sensor_high sensor_low "
       "timestamp_ns"},
      {"samples", train + R"(0,"latency_ns":0,"gap_every":1)",
       "one of gap_every and gap_ns without the other: expected both or neither"},
      {"samples", train + R"(4000000005,"latency_ns":0)", too_long},
      {"samples", train + R"(4000000000,"latency_ns":0,"gap_every":1,"gap_ns":5)", too_long},
      {"first_sample", sensor + R"("latency_ns":"1")",
       "field \"latency_ns\" has type string" + int64},
      {"prox", R"("float_6":3.5e38)", "field \"float_6\" is 3.5e+38" + number},
      {"prox", R"("float_6":"nan")", R"(field "float_6" is "nan")" + number},
      {"hal_latency", R"("operation":2147483648)", "field \"operation\" is 2147483648" + int32},
      {"firmware_state", R"("subject_id":1,"state":2)", "missing field \"detail_code\"" + int32},
      {"atom", R"("id":1,"values":[{"int":1,"long":2}])",
       "field \"values[0]\" has 2 fields" + kind},
      {"atom", R"("id":1,"values":[{"double":1}])",
       R"(field "values[0]" has the unknown field "double")" + kind},
      {"atom", R"("id":1,"values":[{"int":1},{"bools":[true,0]}])",
       "field \"values[1].bools[1]\" has type number: expected true or false"},
      {"diagnostics", R"("processor":[1,2,3])",
       "field \"processor\" has 3 elements: expected an array of 4 elements"},
      {"diagnostics", R"("queue_3":[0,0,0,2147483648,0,0])",
       "field \"queue_3[3]\" is 2147483648" + int32},
      {"diagnostics", R"("memory":[{}])",
       "missing field \"memory[0].kind\": expected an integer from 0 to 255"},
  };
  for (const auto& [event, fields, complaint] : second_lines) {
    EXPECT_EQ(Complaint(kStart + '\n' + Line(5, event, fields)), "t:2: " + complaint);
  }
}

TEST(TraceTest, AcceptsTheExamples) {
  for (const char* name : {"errors", "first_generation", "one_day"}) {
    const std::string path = SENSORVELA_SOURCE_DIR "/examples/" + std::string(name) + ".jsonl";
    EXPECT_FALSE(ParseTrace(path, ReadInput(path)).empty());
  }
}

TEST(TraceTest, SaysWhyAFileCannotBeRead) {
  for (const auto& [path, complaint] : std::vector<std::pair<std::string, std::string>>{
           {"no/such", "no/such: No such file or directory: expected a readable file"},
           {"/", "/: Is a directory: expected a readable file"}}) {
    try {
      ReadInput(path);
      ADD_FAILURE() << path << " was read";
    } catch (const TraceError& error) {
      EXPECT_EQ(error.what(), complaint);
    }
  }
}

// Ends while the reporter thread waits for the service: a lookup loses one atom, the end another.
constexpr char kStory[] = R"({"at_ns":0,"event":"service_declared"}
{"at_ns":0,"event":"engine_start"}
{"at_ns":1,"event":"runtime_error","sensor_high":4294967295,"sensor_low":-1,"type":1,"code":2}
{"at_ns":2,"event":"service_registered"}
{"at_ns":3,"event":"note","text":"line\nfeed"}
{"at_ns":3,"event":"service_silent","reports":1}
{"at_ns":3,"event":"service_fails","reports":1}
{"at_ns":3,"event":"hal_error","sensor_high":1,"sensor_low":2,"call":3,"error":4,"count":11}
{"at_ns":90000000000000,"event":"service_unregistered"}
{"at_ns":90000000000000,"event":"hal_error","sensor_high":1,"sensor_low":2,"call":3,"error":5}
{"at_ns":90000000000000,"event":"service_wait_released"}
{"at_ns":90061000000007,"event":"hal_error","sensor_high":1,"sensor_low":2,"call":3,"error":6}
{"at_ns":90061000000008,"event":"end"}
)";

TEST(ReplayTest, PrintsTheStoryAsText) {
  const std::string hal = "SensorHalErrorDetected (100024)      sensor_id_high=1 sensor_id_low=2 ";
  std::string expected =
      "00:00:00.000000002  atom       SensorRuntimeErrorDetected (100025)  "
      "sensor_id_high=-1 sensor_id_low=-1 error_type=1 error_code=2\n"
      "00:00:00.000000003  # line\\nfeed\n"
      "00:00:00.000000003  NO STATUS  " +
      hal + "hal_call=3 error_code=4\n00:00:00.000000003  FAILED     " + hal +
      "hal_call=3 error_code=4\n";
  for (int i = 0; i < 8; ++i) {
    expected += "00:00:00.000000003  atom       " + hal + "hal_call=3 error_code=4\n";
  }
  expected +=
      "\n"
      "delivered                   9  atoms that the stats service took\n"
      "failed                      2  atoms that it answered with an error or without a status\n"
      "dropped                     2  atoms queued that never reached it\n"
      "blocked by the cap          1  errors too many of their kind in a cycle\n"
      "cycles ended                4\n";
  EXPECT_EQ(Output(kStory, MakeTextReport, false), expected);
}

TEST(ReplayTest, PrintsTheStoryAsJsonLinesWithTheLogInPlace) {
  const std::string output = Output(kStory, MakeJsonLinesReport, true);
  EXPECT_EQ(
      output.substr(0, output.find("{\"kind\":\"note\"")),
      R"({"kind":"log","at_ns":0,"priority":"I","tag":"sensor-vela","text":"Waiting for IStats service to come up."}
{"kind":"log","at_ns":1,"priority":"I","tag":"sensor-vela","text":"Reporting runtime time error [1] code [2] on sensor [0xffffffff]."}
{"kind":"log","at_ns":2,"priority":"I","tag":"sensor-vela","text":"IStats service online."}
{"kind":"atom","at_ns":2,"answer":"ok","atom_id":100025,"name":"SensorRuntimeErrorDetected","values":{"sensor_id_high":-1,"sensor_id_low":-1,"error_type":1,"error_code":2}}
)");
  EXPECT_EQ(
      output.substr(output.rfind("{\"kind\":\"log\"")),
      R"({"kind":"log","at_ns":90061000000008,"priority":"E","tag":"sensor-vela","text":"Failed to get IStats service. Atoms are dropped."}
{"kind":"summary","delivered":9,"failed":2,"dropped":2,"blocked_by_cap":1,"cycles_ended":4}
)");
  EXPECT_EQ(Output(kStory, MakeJsonLinesReport, true), output);
}

// Two trains whose first samples arrive together, at 15 ms: the sensor that began first comes
// first. Their later samples meet lines of the same instants, which see them counted.
TEST(ReplayTest, MergesTrainsAndShowsEachSensorsSamplesByLatency) {
  const std::string first = R"("sensor_high":4294967295,"sensor_low":0)";
  const std::string second = R"("sensor_high":2,"sensor_low":-1)";
  const std::string trace =
      kBegin + Line(0, "sensor_enabled", first + R"(,"period_ns":10000000)") +
      Line(0, "sensor_enabled", second + R"(,"period_ns":10000000)") +
      Line(10'000'000, "samples",
           first + R"(,"count":7,"interval_ns":10000000,"latency_ns":5000000,)" +
               R"("gap_every":3,"gap_ns":1000001)") +
      Line(11'000'000, "samples",
           second + R"(,"count":3,"interval_ns":10000000,"latency_ns":4000000)") +
      Line(35'000'000, "sensor_disabled", second) + Line(46'000'001, "sensor_disabled", first) +
      Line(56'000'001, "sensor_disabled", first) +
      Line(56'000'001, "sensor_enabled", first + R"(,"period_ns":10000000)") +
      Line(57'000'001, "sample", first + R"(,"timestamp_ns":27000000)") +
      Line(60'000'000, "sensor_disabled", first);
  const std::string end = Line(66'000'001, "end");

  const std::string text = Output(trace + end, MakeTextReport, false);
  const std::string first_sample = "00:00:00.015000000  atom       SensorFirstSampleReported ";
  EXPECT_NE(text.find(first_sample + "(100245)   sensor_id_high=-1 sensor_id_low=0 " +
                      "first_sample_latency_ns=15000000\n" + first_sample +
                      "(100245)   sensor_id_high=2 sensor_id_low=-1 "),
            std::string::npos);
  const std::size_t bars = text.find("\nsensor_high=4294967295");
  EXPECT_EQ(
      text.substr(bars, text.find("\n\n", bars) - bars),
      "\nsensor_high=4294967295 sensor_low=0: "
      "7 samples, 6 reported, 1 not reported, 1 late\n"
      "  up to 2.5 ms |                                                            0\n"
      "  up to   5 ms |##################################################          5   83.3 %\n"
      "  up to  10 ms |                                                            0\n"
      "  up to  20 ms |                                                            0\n"
      "  over   20 ms |##########                                                  1   16.7 %");
  EXPECT_NE(Output(trace + end, MakeJsonLinesReport, false)
                .find(R"("sensor_high":4294967295,"sensor_low":0,"samples":7,"reported_samples":6,)"
                      R"("not_reported_samples":1,"late_samples":1,)"
                      R"("latency_histogram":[0,5,0,0,1]})"),
            std::string::npos);
  EXPECT_NE(Output(trace, MakeJsonLinesReport, false).find(R"("samples":8,)"), std::string::npos)
      << "without an end, the train's last sample is delivered, too";
}

/// Keeps the atoms, as `Show` writes them, and the summary.
class RecordingReport : public Report {
 public:
  void Atom(Instant, const VendorAtom& atom, Answer) override { atoms.push_back(Show(atom)); }
  void LogLine(Instant, int, std::string_view, std::string_view) override {}
  void Note(Instant, std::string_view) override {}
  void Finish(const Summary& final) override { summary = final; }

  std::vector<std::string> atoms;
  Summary summary;
};

/// Three cycles: the supplier has nothing to say, then `items`, then nothing again.
RecordingReport RunDiagnostics(const std::string& supplier, const std::string& items) {
  const std::int64_t hour_ns = 3'600'000'000'000;
  RecordingReport report;
  Replay(report, false)
      .Run(ParseTrace("t", Line(0, "service_registered") + Line(0, "engine_start", supplier) +
                               Line(7 * hour_ns, "diagnostics", items) +
                               Line(13 * hour_ns, "diagnostics") + Line(18 * hour_ns, "end")));
  return report;
}

TEST(ReplayTest, AnswersForTheDiagnosticsSupplier) {
  const std::string buckets = "[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20]";
  const std::string durations = "[0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,21]";
  const RecordingReport second = RunDiagnostics(
      "",
      R"("processor":[1,2,3,4294967300],"queue_1":[1,2,3,4,5,6],"queue_2":[6,5,4,3,2,1],)"
      R"("queue_3":[0,0,0,0,0,7],"ipc_error_rates":[[1,2,3,4],[5,6,7,8]],"memory":[{"kind":2,)"
      R"("shared_value":1,"pressure_value_1":2,"pressure_value_2":3,"pressure_value_3":4,)"
      R"("pressure_value_4":0.5},{"kind":1,"serviceability_value_1":5,"serviceability_value_2":6,)"
      R"("bucket_allocation_count":)" +
          buckets + R"(,"bucket_duration_ms":)" + durations +
          R"(}],"sensor_usages":[[1,2,3,4,5,6,7]],"gating_contexts":[[1,2,3,4,5,6,7,8,9]],)"
          R"("dram_exception":[1,2,3,4,5],)"
          R"("prox_stats":[1,2,3,4,5,6,7,8,9,10.5,"NaN",12,13,14,15,16,17,18,19,20])");
  const std::string prox =
      "100334 i1 i2 i3 i4 i5 i6 i7 i8 f9 f10.5 fnan:7fc00000 f12 f13 f14 i15 i16 i17 i18 i19 i20";
  const std::string serviceability =
      "100304 i210 i0 i5 i6 [ 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 ] "
      "[ 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 21 ]";
  EXPECT_EQ(second.atoms,
            (std::vector<std::string>{
                "100028 i1 i2 i3 i4", "100029 i1 i1 i2 i3 i4 i5 i6", "100029 i2 i6 i5 i4 i3 i2 i1",
                "100029 i3 i0 i0 i0 i0 i0 i7", "100069 i1 i2 i3 i4", "100069 i5 i6 i7 i8",
                "100070 i1 i2 i3 i4 f0.5", serviceability, "100107 i1 i2 i3 i4 i5 i6 i7",
                "100109 i1 i2 i3 i4 i5 i6 i7 i8 i9", "100110 i1 i2 i3 i4 i5", prox}));
  EXPECT_EQ(second.summary.cycles_ended, 3);

  const RecordingReport first =
      RunDiagnostics(R"("supplier":"first")", R"("queue_2":[1,2,3,4,5,6],"queue_3":[7,0,0,0,0,0])");
  ASSERT_EQ(first.atoms.size(), 12);
  EXPECT_EQ(first.atoms[5], "100029 i1 i0 i0 i0 i0 i0 i0");
  EXPECT_EQ(first.atoms[6], "100029 i2 i1 i2 i3 i4 i5 i6");
  EXPECT_EQ(first.atoms[7], "100029 i3 i7 i0 i0 i0 i0 i0");
  EXPECT_EQ(first.atoms[10], "100029 i2 i0 i0 i0 i0 i0 i0");
  EXPECT_EQ(first.summary.cycles_ended, 3);

  const std::string none = Line(0, "engine_start", R"("supplier":"none")");
  EXPECT_NE(Output(none, MakeTextReport, false).find("ended                -"), std::string::npos);
  EXPECT_NE(Output(none, MakeJsonLinesReport, false).find(R"("cycles_ended":null})"),
            std::string::npos);
}

TEST(ReplayTest, HandsOneShotEventsAndOutsideAtomsOn) {
  const std::string sensor = R"("sensor_high":1,"sensor_low":2,)";
  const std::string trace =
      kBegin +
      Line(1, "prox", R"("int_0":1,"int_7":8,"float_0":"Infinity","int_9":14,"float_6":-0.0)") +
      Line(2, "hal_latency", R"("operation":3,)" + sensor + R"("latency_ns":4)") +
      Line(3, "firmware_state", R"("subject_id":1,"state":2,"detail_code":3)") +
      Line(4, "first_sample", sensor + R"("latency_ns":-3)") +
      Line(5, "atom", R"("id":100242,"values":[{"string":"no change of state"}])");
  RecordingReport report;
  Replay(report, false).Run(ParseTrace("t", trace));
  EXPECT_EQ(report.atoms,
            (std::vector<std::string>{
                "100133 i1 i0 i0 i0 i0 i0 i0 i8 finf f0 f0 f0 i0 i14 f0 f0 f-0",
                "100243 i1 i2 i3 l4", "100244 i1 i2 i3", "100245 i1 i2 l-3", "100242 other"}));
}

TEST(ReplayTest, PrintsEveryKindOfValueOfAnAtomFromOutside) {
  const std::string trace =
      kBegin +
      Line(0, "atom",
           R"("id":7,"domain":"a.b","values":[{"long":-9223372036854775808},{"float":0.1},)"
           R"({"float":"NaN"},{"string":"\"\u001b"},{"bool":true},{"ints":[]},{"longs":[1,-1]},)"
           R"({"floats":[-0.0,"-Infinity"]},{"strings":["a",""]},{"bools":[true,false]},)"
           R"({"bytes":[0,255]},{"int":5}])");
  const std::string text = Output(trace, MakeTextReport, false);
  EXPECT_EQ(text.substr(0, text.find('\n')),
            "00:00:00.000000000  atom       atom 7                               domain=\"a.b\" "
            "value_1=-9223372036854775808 value_2=0.1 value_3=NaN value_4=\"\\\"\\u001b\" "
            "value_5=true value_6=[] value_7=[1,-1] value_8=[-0.0,\"-Infinity\"] "
            "value_9=[\"a\",\"\"] value_10=[true,false] value_11=[0,255] value_12=5");
  EXPECT_NE(Output(trace, MakeJsonLinesReport, false)
                .find(R"("name":"atom 7","domain":"a.b","values":{"value_1":-9223372036854775808,)"
                      R"("value_2":0.1,"value_3":"NaN","value_4":"\"\u001b","value_5":true,)"
                      R"("value_6":[],"value_7":[1,-1],"value_8":[-0.0,"-Infinity"])"),
            std::string::npos);
}

TEST(AtomCatalogueTest, AgreesWithEveryBuilder) {
#define BUILT(Record) {#Record, createVendorAtom(atoms::Record{})}
  const std::map<std::string_view, VendorAtom> built = {
      BUILT(SensorHalErrorDetected),
      BUILT(SensorRuntimeErrorDetected),
      BUILT(SensorProcessorDiagnosticsReported),
      BUILT(SensorSystemQueueStressReported),
      BUILT(SensorIpcErrorRateReported),
      BUILT(SensorMemoryPressureReported),
      BUILT(HingeAngleStateChanged),
      BUILT(TarnSensorUsageReported),
      BUILT(TarnServerWorkerUsageReported),
      BUILT(SensorGatingContextReported),
      BUILT(SensorCoreDramExceptionsReported),
      BUILT(ProxStatusReported),
      BUILT(HingeHallSensorTriggered),
      BUILT(HalSensorStateChanged),
      BUILT(SensorHalLatencyRecorded),
      BUILT(SensorFirmwareStateChanged),
      BUILT(SensorFirstSampleReported),
      BUILT(AlsLuxLevelDistributionReported),
      BUILT(SensorMemoryServiceabilityStatsReported),
      BUILT(AADProxStatsReported)};
#undef BUILT
  EXPECT_EQ(built.size(), AtomCatalogue().size());
  for (const AtomInfo& info : AtomCatalogue()) {
    ASSERT_TRUE(built.contains(info.name)) << info.name;
    const VendorAtom& atom = built.at(info.name);
    EXPECT_EQ(atom.atomId, info.id);
    EXPECT_TRUE(std::ranges::equal(atom.values, info.values, {}, &VendorAtomValue::getTag,
                                   &ValueInfo::kind))
        << info.name;
  }
}

TEST(AtomCatalogueTest, IsWhatTheDocumentSays) {
  std::string tables;
  for (const AtomInfo& atom : AtomCatalogue()) {
    tables += "## " + std::string(atom.name) + " (" + std::to_string(atom.id) + ")\n" +
              "| # | value | kind | meaning |\n|---|---|---|---|\n";
    for (std::size_t i = 0; i < atom.values.size(); ++i) {
      const auto& [name, kind, meaning] = atom.values[i];
      tables += "| " + std::to_string(i + 1) + " | `" + std::string(name) + "` | " +
                std::string(KindName(kind)) + " | " + std::string(meaning) + " |\n";
    }
  }
  std::istringstream document(ReadInput(SENSORVELA_SOURCE_DIR "/docs/atoms.md"));
  std::string documented;
  for (std::string line; std::getline(document, line);) {
    if (line.starts_with("## ") || line.starts_with("|")) documented += line + '\n';
  }
  EXPECT_EQ(documented, tables);
}

}  // namespace
}  // namespace sensorvela::replay
