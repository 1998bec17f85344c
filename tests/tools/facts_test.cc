#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/facts/captions.h"
#include "tools/facts/log_histogram.h"
#include "tools/facts/run_observer.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::tools {
namespace {

constexpr char kSensor[] = R"(,"sensor_high":1,"sensor_low":2)";

/// A trace of lines "AT_MS EVENT" and, after a further space, more of the event's fields. "S" in
/// these stands for a sensor.
std::string TraceOf(const std::string& text) {
  std::istringstream lines(text);
  std::string trace;
  for (std::string line; std::getline(lines, line, ';');) {
    std::istringstream words(line);
    std::string ms;
    std::string event;
    std::string fields;
    words >> ms >> event;
    std::getline(words >> std::ws, fields);
    if (!fields.empty() && fields[0] == 'S') fields.replace(0, 1, kSensor);
    trace.append(R"({"at_ns":)").append(ms).append(ms == "0" ? "" : "000000");
    trace.append(R"(,"event":")").append(event).append("\"").append(fields).append("}\n");
  }
  return trace;
}

/// What a run says at its end and in between.
struct Replayed : RunObserver {
  explicit Replayed(const std::string& lines) {
    const Trace trace("t", Input(lines));
    Replay({this}, false).Run(trace.Events());
  }

  void OnAtom(Instant /*at*/, const AtomFact& atom) override {
    if (atom.dropped) drops += std::string(WordOf(*atom.dropped)) + ' ';
  }
  void OnOutage(const Outage& outage) override {
    const auto ms = [](Instant at) { return std::to_string(at.count() / 1'000'000); };
    outages += ms(outage.from) + '-' + ms(outage.to) + ' ' + std::string(WordOf(outage.reason)) +
               (outage.is_first ? " first" : "") + (outage.lasts ? " lasts" : "") + ", ";
  }
  void OnRunEnd(Instant /*at*/, const Summary& end) override { summary = end; }

  std::string drops;
  std::string outages;
  Summary summary;
};

TEST(LogHistogramTest, KnowsPercentilesToASixtyFourth) {
  std::mt19937_64 random(1);
  for (int round = 0; round < 40; ++round) {
    std::vector<std::int64_t> values;
    LogHistogram whole;
    LogHistogram half;
    for (int i = 0; i < 500; ++i) {
      const auto value = static_cast<std::int64_t>(random() >> (1 + random() % 63));
      values.push_back(value);
      (i % 2 == 0 ? whole : half).Add(value);
    }
    whole += half;
    std::sort(values.begin(), values.end());
    EXPECT_EQ(whole.count(), values.size());
    EXPECT_EQ(whole.greatest(), values.back());
    for (const double share : {0.0, 0.01, 0.5, 0.9, 0.99, 1.0}) {
      const auto rank = std::max(1.0, std::ceil(share * 500));
      const std::int64_t exact = values[static_cast<std::size_t>(rank) - 1];
      EXPECT_LE(std::abs(static_cast<double>(whole.Percentile(share) - exact)),
                static_cast<double>(exact) / 64)
          << share << " of round " << round;
    }
  }
}

TEST(LogHistogramTest, IsExactForEqualValuesOfAnySize) {
  for (const std::int64_t value :
       {std::int64_t{0}, std::int64_t{1}, std::int64_t{63}, std::int64_t{64},
        std::int64_t{20'000'001}, std::numeric_limits<std::int64_t>::max()}) {
    LogHistogram histogram;
    for (int i = 0; i < 3; ++i) histogram.Add(value);
    for (const double share : {0.0, 0.5, 1.0}) EXPECT_EQ(histogram.Percentile(share), value);
    EXPECT_EQ(histogram.greatest(), value);
  }
  LogHistogram negative;
  negative.Add(std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(negative.count(), 1u);
  EXPECT_EQ(negative.Percentile(0.5), 0);
  const LogHistogram empty;
  EXPECT_EQ(empty.count(), 0u);
  EXPECT_EQ(empty.Percentile(0.5), 0);
}

/// A trace whose events are letters: E, D and 3 stand for an enable, a disable and three samples;
/// - and + for the access refused and allowed, W and R for the service away and back.
std::string TraceOfLetters(std::string_view letters) {
  const std::map<char, std::string> events = {{'E', R"(sensor_enabled S,"period_ns":10000000;)"},
                                              {'D', "sensor_disabled S;"},
                                              {'-', "service_refused;"},
                                              {'+', "service_allowed;"},
                                              {'W', "service_unregistered;"},
                                              {'R', "service_registered;"}};
  std::string text = "0 service_registered;0 engine_start;";
  int ms = 10;
  for (const char letter : letters) {
    if (letter != '3') {
      text += std::to_string(ms += 10) + ' ' + events.at(letter);
      continue;
    }
    for (int i = 0; i < 3; ++i) {
      const std::string timestamp = std::to_string(ms);
      text += std::to_string(ms += 10);
      text.append(R"( sample S,"timestamp_ns":)").append(timestamp).append("000000;");
    }
  }
  return TraceOf(text);
}

TEST(SamplesTest, AreNotReportedForAReason) {
  struct Case {
    const char* events;
    const char* expected;
  };
  for (const auto& [events, expected] :
       {Case{"E3D", ""}, Case{"", ""}, Case{"E3", "3 not disabled yet, "},
        Case{"E3D3E3", "3 not disabled yet, 3 sampled while not enabled, "},
        Case{"E3E33D", "3 enabled anew before a disable, "},
        Case{"3", "3 sampled while not enabled, "}, Case{"3D", ""},
        // A second disable reports what came after the first.
        Case{"E3D3D", ""}, Case{"E3D33", "6 sampled while not enabled, "},
        Case{"E3-D+E33D", "3 report lost, "}, Case{"E3-D", "3 report lost, "},
        Case{"E3WDE3", "3 not disabled yet, 3 report lost, "}, Case{"E3WDE3DR", ""}}) {
    SCOPED_TRACE(events);
    const Replayed run(TraceOfLetters(events));
    std::string reasons;
    std::uint64_t samples = 0;
    for (const SensorSummary& sensor : run.summary.sensors) {
      for (const auto& [reason, count] : ReasonsOf(sensor.not_reported)) {
        reasons += std::to_string(count) + ' ' + reason + ", ";
      }
      samples += sensor.reported.value_or(SampleCounts()).samples;
      samples += sensor.not_reported.Total();
      EXPECT_EQ(samples, sensor.arrived.counts.samples);
    }
    EXPECT_EQ(reasons, expected);
  }
}

// Lateness and latency are known of a sensor that is never disabled, and what no report has is not
// 0.
TEST(SamplesTest, AreKnownAsTheyArrived) {
  const Replayed run(TraceOf(R"(0 service_registered;0 engine_start;
100 sensor_enabled S,"period_ns":10000000;
110 samples S,"count":100,"interval_ns":10000000,"latency_ns":4000000;
1120 samples S,"count":2,"interval_ns":10000000,"latency_ns":30000000)"));
  ASSERT_EQ(run.summary.sensors.size(), 1u);
  const SensorSummary& sensor = run.summary.sensors[0];
  EXPECT_FALSE(sensor.reported);
  EXPECT_EQ(sensor.arrived.counts.late, 1u);
  EXPECT_EQ(sensor.arrived.counts.bands.back(), 2u);
  EXPECT_EQ(sensor.arrived.latency_ns.Percentile(0.5), 4'000'000);
  EXPECT_EQ(sensor.arrived.latency_ns.Percentile(0.99), 30'000'000);
  EXPECT_EQ(sensor.arrived.first_latency_ns.Percentile(0.5), 14'000'000);
  EXPECT_EQ(sensor.arrived.RateHz(), 100.0);
}

TEST(OutageTest, SaysWhenAndWhy) {
  struct Case {
    const char* events;
    const char* outages;
    const char* drops;
  };
  const std::string error = R"( hal_latency S,"operation":1,"latency_ns":1;)";
  for (const auto& [events, outages, drops] :
       {Case{"0 service_registered;0 engine_start;9 E", "", ""},
        Case{"0 engine_start;5 E;9 service_registered", "0-9 not_registered first, ", ""},
        Case{"0 engine_start;5 E;9 time_passes", "0-9 not_registered first lasts, ",
             "still_queued "},
        Case{"0 engine_start;0 service_registered;5 service_refused;6 E;9 service_allowed",
             "5-9 refused, ", "refused "},
        Case{"0 engine_start;0 service_registered;5 service_unregistered;6 E;7 "
             "service_wait_released;9 service_registered",
             "5-9 not_registered, ", "lookup_failed "},
        // The reason is that of the beginning; a drop's is that of the lookup.
        Case{"0 engine_start;0 service_registered;5 service_unregistered;6 service_refused;7 E;8 "
             "end",
             "5-8 not_registered lasts, ", "refused "},
        // A recording says only what its lookups found.
        Case{R"(0 recording ,"version":1;0 engine_start;5 E;5 lookup_found ,"reports":0;)"
             R"(6 E;6 lookup_found_none ,"reports":1;7 E;7 lookup_waits;)"
             R"(9 lookup_found ,"reports":1;10 end ,"reports":2)",
             "6-9 refused_or_failed, ", "refused_or_failed "}}) {
    SCOPED_TRACE(events);
    std::string text = events;
    for (std::size_t at = 0; (at = text.find(" E")) != std::string::npos;) {
      const bool is_last = at + 2 == text.size();
      text.replace(at, is_last ? 2 : 3, error);
    }
    const Replayed run(TraceOf(text));
    EXPECT_EQ(run.outages, outages);
    EXPECT_EQ(run.drops, drops);
    const bool is_counted = *outages != '\0' && run.outages.find("first") == std::string::npos;
    EXPECT_EQ(run.summary.outages, is_counted ? 1u : 0u);
    EXPECT_EQ(run.summary.away.count() > 0, is_counted);
  }
}

}  // namespace
}  // namespace sensorvela::tools
