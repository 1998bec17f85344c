#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "atoms/standalone_atoms.h"
#include "tools/atom_catalogue.h"
#include "tools/replay.h"
#include "tools/report.h"
#include "tools/trace.h"

namespace sensorvela::replay {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

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

const std::string kStart = R"({"at_ns":5,"event":"engine_start"})";
const std::string kKinds =
    "engine_start, hal_error, runtime_error, service_declared, service_undeclared, "
    "service_registered, service_unregistered, service_wait_released, service_fails, "
    "service_silent, time_passes, note, end";

TEST(TraceTest, SaysWhatIsWrongWithATraceAndWhere) {
  const std::string at_ns = ": expected an integer from 0 to 4000000000000000000";
  const std::string at_ns_float = "t:1: field \"at_ns\" is not a plain 64-bit integer" + at_ns;
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "t:1: the trace is empty: expected one event a line"},
      {"\n \t\r\n", "t:1: the trace is empty: expected one event a line"},
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
      {R"({"event":"end","at_ns":1e3})", at_ns_float},
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
  };
  for (const auto& [trace, complaint] : cases) EXPECT_EQ(Complaint(trace), complaint);
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
  EXPECT_EQ(output.substr(0, output.find("{\"kind\":\"note\"")),
            R"({"kind":"log","at_ns":0,"priority":"I","tag":"sensor-vela",)"
            R"("text":"Waiting for IStats service to come up."})"
            "\n"
            R"({"kind":"log","at_ns":1,"priority":"I","tag":"sensor-vela",)"
            R"("text":"Reporting runtime time error [1] code [2] on sensor [0xffffffff]."})"
            "\n"
            R"({"kind":"log","at_ns":2,"priority":"I","tag":"sensor-vela",)"
            R"("text":"IStats service online."})"
            "\n"
            R"({"kind":"atom","at_ns":2,"answer":"ok","atom_id":100025,)"
            R"("name":"SensorRuntimeErrorDetected","values":{"sensor_id_high":-1,)"
            R"("sensor_id_low":-1,"error_type":1,"error_code":2}})"
            "\n");
  EXPECT_EQ(output.substr(output.rfind("{\"kind\":\"log\"")),
            R"({"kind":"log","at_ns":90061000000008,"priority":"E","tag":"sensor-vela",)"
            R"("text":"Failed to get IStats service. Atoms are dropped."})"
            "\n"
            R"({"kind":"summary","delivered":9,"failed":2,"dropped":2,"blocked_by_cap":1,)"
            R"("cycles_ended":4})"
            "\n");
  EXPECT_EQ(Output(kStory, MakeJsonLinesReport, true), output);
}

TEST(ReportTest, PrintsEveryKindOfValueOfAnUnknownAtom) {
  const float infinity = std::numeric_limits<float>::infinity();
  VendorAtom atom;
  atom.atomId = 7;
  atom.values = {
      VendorAtomValue::make<VendorAtomValue::longValue>(std::numeric_limits<std::int64_t>::min()),
      VendorAtomValue::make<VendorAtomValue::floatValue>(0.1f),
      VendorAtomValue::make<VendorAtomValue::floatValue>(infinity - infinity),
      VendorAtomValue::make<VendorAtomValue::stringValue>("\"\x1b\xff"),
      VendorAtomValue::make<VendorAtomValue::boolValue>(true),
      VendorAtomValue::make<VendorAtomValue::repeatedIntValue>(std::vector<std::int32_t>{}),
      VendorAtomValue::make<VendorAtomValue::repeatedLongValue>(std::nullopt),
      VendorAtomValue::make<VendorAtomValue::repeatedFloatValue>(std::vector{-0.0f, -infinity}),
      VendorAtomValue::make<VendorAtomValue::repeatedStringValue>(
          std::vector<std::optional<std::string>>{"a", std::nullopt}),
      VendorAtomValue::make<VendorAtomValue::repeatedBoolValue>(std::vector{true, false}),
      VendorAtomValue::make<VendorAtomValue::byteArrayValue>(std::vector<std::uint8_t>{0, 255}),
  };
  std::ostringstream out;
  MakeTextReport(out)->Atom({}, atom, Answer::kOk);
  MakeJsonLinesReport(out)->Atom({}, atom, Answer::kOk);
  EXPECT_EQ(out.str(),
            "00:00:00.000000000  atom       atom 7                               "
            "value_1=-9223372036854775808 value_2=0.1 value_3=NaN value_4=\"\\\"\\u001b\\ufffd\" "
            "value_5=true value_6=[] value_7=null value_8=[-0.0,\"-Infinity\"] "
            "value_9=[\"a\",null] value_10=[true,false] value_11=[0,255]\n"
            R"({"kind":"atom","at_ns":0,"answer":"ok","atom_id":7,"name":"atom 7","values":)"
            R"({"value_1":-9223372036854775808,"value_2":0.1,"value_3":"NaN",)"
            "\"value_4\":\"\\\"\\u001b\uFFFD\","
            R"("value_5":true,"value_6":[],"value_7":null,"value_8":[-0.0,"-Infinity"],)"
            R"("value_9":["a",null],"value_10":[true,false],"value_11":[0,255]}})"
            "\n");
}

// Notes in `agreed` that the catalogue has what the builder of `name` makes.
void CheckAgainstCatalogue(std::string_view name, const VendorAtom& atom,
                           std::set<std::string_view>& agreed) {
  const AtomInfo* info = FindAtom(atom.atomId);
  ASSERT_NE(info, nullptr) << name;
  EXPECT_EQ(info->name, name);
  ASSERT_EQ(info->values.size(), atom.values.size()) << name;
  for (std::size_t i = 0; i < atom.values.size(); ++i) {
    EXPECT_EQ(info->values[i].kind, atom.values[i].getTag()) << name << " value " << i + 1;
  }
  agreed.insert(info->name);
}

TEST(AtomCatalogueTest, AgreesWithEveryBuilder) {
  std::set<std::string_view> agreed;
#define CHECK_BUILDER(Record) \
  CheckAgainstCatalogue(#Record, createVendorAtom(atoms::Record{}), agreed)
  CHECK_BUILDER(SensorHalErrorDetected);
  CHECK_BUILDER(SensorRuntimeErrorDetected);
  CHECK_BUILDER(SensorProcessorDiagnosticsReported);
  CHECK_BUILDER(SensorSystemQueueStressReported);
  CHECK_BUILDER(SensorIpcErrorRateReported);
  CHECK_BUILDER(SensorMemoryPressureReported);
  CHECK_BUILDER(HingeAngleStateChanged);
  CHECK_BUILDER(TarnSensorUsageReported);
  CHECK_BUILDER(TarnServerWorkerUsageReported);
  CHECK_BUILDER(SensorGatingContextReported);
  CHECK_BUILDER(SensorCoreDramExceptionsReported);
  CHECK_BUILDER(ProxStatusReported);
  CHECK_BUILDER(HingeHallSensorTriggered);
  CHECK_BUILDER(HalSensorStateChanged);
  CHECK_BUILDER(SensorHalLatencyRecorded);
  CHECK_BUILDER(SensorFirmwareStateChanged);
  CHECK_BUILDER(SensorFirstSampleReported);
  CHECK_BUILDER(AlsLuxLevelDistributionReported);
  CHECK_BUILDER(SensorMemoryServiceabilityStatsReported);
  CHECK_BUILDER(AADProxStatsReported);
#undef CHECK_BUILDER
  EXPECT_EQ(agreed.size(), AtomCatalogue().size());
}

}  // namespace
}  // namespace sensorvela::replay
