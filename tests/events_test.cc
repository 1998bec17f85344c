#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

using Texts = std::vector<std::string>;
using HalCall = SensorVela::HalCall;
using ErrorType = SensorVela::ErrorType;

/// Runs `body` on that many threads at once.
template <typename Body>
void OnThreads(int count, Body body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
  for (std::thread& thread : threads) thread.join();
}

class ErrorTest : public EngineTest {
 protected:
  ErrorTest() {
    Start();
    time_.WaitUntilAtRest();
    start_lines_ = Lines().size();
  }

  Texts ErrorLines() {
    Texts lines = Lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(start_lines_));
    return lines;
  }

 private:
  std::size_t start_lines_ = 0;
};

TEST_F(ErrorTest, EachIsLoggedAndSentAsItIs) {
  engine_->LogSensorHalError({0x1A2B, -2}, HalCall{-1}, -22);
  engine_->LogSensorRuntimeError({0xFFFFFFFF, 5}, ErrorType{4}, 9);
  EXPECT_EQ(Delivered(), (Texts{"100024 i6699 i-2 i-1 i-22", "100025 i-1 i5 i4 i9"}));
  EXPECT_EQ(ErrorLines(),
            (Texts{"I Reporting HAL call [-1] error [-22] on sensor [0x00001a2b].",
                   "I Reporting runtime time error [4] code [9] on sensor [0xffffffff]."}));
}

TEST_F(ErrorTest, TheCapCountsAnErrorOverAllSensorsAndCodes) {
  for (int i = 0; i < 5; ++i) engine_->LogSensorHalError({1, 1}, HalCall{3}, i);
  for (int i = 0; i < 5; ++i) engine_->LogSensorHalError({2, 2}, HalCall{3}, -i);
  // Neither another call nor another family counts with them.
  engine_->LogSensorHalError({1, 1}, HalCall{4}, 0);
  for (int i = 0; i < 12; ++i) engine_->LogSensorRuntimeError({1, 1}, ErrorType{3}, 0);
  engine_->LogSensorHalError({2, 2}, HalCall{3}, 0);
  EXPECT_EQ(Delivered().size(), 5U + 5U + 1U + 10U);
  const Texts lines = ErrorLines();
  EXPECT_EQ(Texts(lines.end() - 3, lines.end()),
            (Texts{"E Runtime Error [3] has occurred [11] times in current cycle, upload blocked "
                   "due to cap [10] met.",
                   "E Runtime Error [3] has occurred [12] times in current cycle, upload blocked "
                   "due to cap [10] met.",
                   "E HAL Error [3] has occurred [11] times in current cycle, upload blocked due "
                   "to cap [10] met."}));
}

TEST_F(ErrorTest, ACyclesEndLiftsTheCap) {
  const auto report = [this] { engine_->LogSensorHalError({1, 1}, HalCall{3}, 0); };
  for (int i = 0; i < 20; ++i) report();
  time_.RunTo(6h);
  EXPECT_EQ(Delivered().size(), 10U);
  for (int i = 0; i < 11; ++i) report();
  EXPECT_EQ(Delivered().size(), 10U);
  EXPECT_EQ(CountLines("occurred [11] times"), 2);
}

TEST_F(ErrorTest, ThreadsThatReportTheSameErrorShareItsCap) {
  constexpr int kThreads = 8;
  constexpr int kReportsEach = 50;
  OnThreads(kThreads, [this](int) {
    for (int i = 0; i < kReportsEach; ++i) engine_->LogSensorHalError({1, 1}, HalCall{-7}, i);
  });
  EXPECT_EQ(Delivered().size(), 10U);
  EXPECT_EQ(CountLines("I Reporting HAL call [-7]"), 10);
  for (int count = 1; count <= kThreads * kReportsEach; ++count) {
    EXPECT_EQ(CountLines("occurred [" + std::to_string(count) + "] times"), count > 10 ? 1 : 0);
  }
}

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

class SensorStatusTest : public EngineTest {
 protected:
  SensorStatusTest() { Start(); }

  static constexpr SensorVela::SensorId kSensor = {16, 2};

  /// The disabled atom of `sensor`, after its identifiers, state and period.
  std::string Disable(SensorVela::SensorId sensor = kSensor) {
    Delivered();
    engine_->ReportHalSensorDisabled(sensor);
    const std::string head = "100242 i" + std::to_string(static_cast<std::int32_t>(sensor.high)) +
                             " i" + std::to_string(sensor.low) + " i1 l-1 ";
    const std::string shown = Delivered().at(0);
    EXPECT_EQ(shown.substr(0, head.size()), head);
    return shown.substr(head.size());
  }
};

TEST_F(SensorStatusTest, EachLatencyFallsInItsBand) {
  const struct {
    std::int64_t latency_ns;
    const char* bands;
  } kCases[] = {
      {kMin, "[ 1 0 0 0 0 ]"},       {-1, "[ 1 0 0 0 0 ]"},         {0, "[ 1 0 0 0 0 ]"},
      {2'500'000, "[ 1 0 0 0 0 ]"},  {2'500'001, "[ 0 1 0 0 0 ]"},  {5'000'000, "[ 0 1 0 0 0 ]"},
      {5'000'001, "[ 0 0 1 0 0 ]"},  {10'000'000, "[ 0 0 1 0 0 ]"}, {10'000'001, "[ 0 0 0 1 0 ]"},
      {20'000'000, "[ 0 0 0 1 0 ]"}, {20'000'001, "[ 0 0 0 0 1 ]"}, {kMax, "[ 0 0 0 0 1 ]"},
  };
  time_.RunTo(1h);
  for (const auto& test : kCases) {
    engine_->ReportHalSensorEnabled(kSensor, kMax);  // No gap is late.
    const std::uint64_t timestamp = static_cast<std::uint64_t>(time_.Now().count()) -
                                    static_cast<std::uint64_t>(test.latency_ns);
    engine_->LogSensorLatency(kSensor, static_cast<std::int64_t>(timestamp));
    EXPECT_EQ(Disable(), std::string("i1 i0 ") + test.bands) << test.latency_ns;
  }
}

TEST_F(SensorStatusTest, ASampleIsLatePastTheThresholdInSinglePrecision) {
  const struct {
    std::int64_t period_ns;
    std::int64_t threshold_ns;
  } kCases[] = {
      {20'000'000, 22'000'000},
      {66'666'666, 73'333'328},
      {10'000'000, 11'000'000},
      {0, 0},
      {-1, -1},
      {-10'000'000, -11'000'000},
      {8'384'883'669'867'978'752, 9'223'372'036'854'775'807},  // Products from 2^63 on saturate.
      {kMax, kMax},
      {kMin, kMin},
  };
  for (const auto& test : kCases) {
    // Time is 0, so the first gap is the sample's own timestamp.
    engine_->ReportHalSensorEnabled(kSensor, test.period_ns);
    engine_->LogSensorLatency(kSensor, test.threshold_ns);
    EXPECT_EQ(Disable().substr(0, 5), "i1 i0") << test.period_ns;
    if (test.threshold_ns == kMax) continue;
    engine_->ReportHalSensorEnabled(kSensor, test.period_ns);
    engine_->LogSensorLatency(kSensor, test.threshold_ns + 1);
    EXPECT_EQ(Disable().substr(0, 5), "i1 i1") << test.period_ns;
  }
}

TEST_F(SensorStatusTest, GapsAreMeasuredFromTheEnableAndThenBetweenTimestamps) {
  time_.RunTo(1s);
  engine_->ReportHalSensorEnabled(kSensor, 10'000'000);
  for (const std::int64_t timestamp_ns :
       {1'011'000'000, 1'021'000'000, 1'032'000'001, 1'000'000'000, 1'011'000'001}) {
    engine_->LogSensorLatency(kSensor, timestamp_ns);
  }
  EXPECT_EQ(Disable(), "i5 i2 [ 5 0 0 0 0 ]");
}

TEST_F(SensorStatusTest, TheFirstSampleAfterEachEnableIsReported) {
  time_.RunTo(5s);
  engine_->ReportHalSensorEnabled(kSensor, 20'000'000);
  time_.RunTo(5'300ms);
  engine_->LogSensorLatency(kSensor, 0);
  engine_->LogSensorLatency(kSensor, 0);
  EXPECT_EQ(Delivered(),
            (Texts{"100242 i16 i2 i2 l20000000 i-1 i-1 [ ]", "100245 i16 i2 l300000000"}));

  // A second enable discards what no disable has reported.
  engine_->ReportHalSensorEnabled(kSensor, kMin);
  engine_->LogSensorLatency(kSensor, 0);
  EXPECT_EQ(Delivered(),
            (Texts{"100242 i16 i2 i2 l-9223372036854775808 i-1 i-1 [ ]", "100245 i16 i2 l0"}));
  EXPECT_EQ(Disable(), "i1 i1 [ 0 0 0 0 1 ]");
}

TEST_F(SensorStatusTest, ADisableReportsAndLeavesTheStatusAsItIs) {
  engine_->ReportHalSensorEnabled(kSensor, 1'000);
  engine_->LogSensorLatency(kSensor, 1'000);
  EXPECT_EQ(Disable(), "i1 i0 [ 1 0 0 0 0 ]");
  engine_->LogSensorLatency(kSensor, 2'000);
  EXPECT_EQ(Disable(), "i2 i0 [ 2 0 0 0 0 ]");
}

TEST_F(SensorStatusTest, ASensorThatWasNeverEnabledBeginsAtZero) {
  time_.RunTo(1h);
  EXPECT_EQ(Disable(), "i0 i0 [ 0 0 0 0 0 ]");
  for (const SensorVela::SensorId sensor : {kSensor, SensorVela::SensorId{1, 1}}) {
    engine_->LogSensorLatency(sensor, 1);
    EXPECT_EQ(Delivered().at(0).substr(0, 6), "100245");
    EXPECT_EQ(Disable(sensor), "i1 i1 [ 0 0 0 0 1 ]");
  }
}

TEST_F(SensorStatusTest, SensorsDifferInEitherHalf) {
  const SensorVela::SensorId kSensors[] = {{1, 1}, {2, 1}, {1, -1}, {0xFFFFFFFF, 1}};
  for (const SensorVela::SensorId sensor : kSensors) engine_->LogSensorLatency(sensor, 0);
  for (const SensorVela::SensorId sensor : kSensors) {
    EXPECT_EQ(Disable(sensor), "i1 i0 [ 1 0 0 0 0 ]");
  }
}

TEST_F(SensorStatusTest, CountersWrapAndZeroIsAFirstSampleAgain) {
  engine_->ReportHalSensorEnabled(kSensor, -1);
  SensorVelaTestPeer::SetCounters(*engine_, kSensor, 0xFFFFFFFE);
  time_.RunTo(1h);
  engine_->LogSensorLatency(kSensor, 1);
  EXPECT_EQ(Disable(), "i-1 i-1 [ 0 0 0 0 -1 ]");
  engine_->LogSensorLatency(kSensor, 1);
  EXPECT_EQ(Disable(), "i0 i0 [ 0 0 0 0 0 ]");
  engine_->LogSensorLatency(kSensor, 1);
  EXPECT_EQ(Delivered(), Texts{"100245 i16 i2 l3600000000000"});
}

TEST_F(SensorStatusTest, ThreadsThatSampleSharedSensorsLoseNoSample) {
  constexpr int kSensors = 64;
  constexpr int kSamplesEach = 4'000;
  // A sensor's disable and enable are one step for its samples, so that none falls between them.
  std::shared_mutex toggles[kSensors];
  const auto id = [](int sensor) { return SensorVela::SensorId{static_cast<unsigned>(sensor), 0}; };
  const auto toggle = [&](int sensor) {
    const std::lock_guard lock(toggles[sensor]);
    engine_->ReportHalSensorDisabled(id(sensor));
    engine_->ReportHalSensorEnabled(id(sensor), 0);
  };
  OnThreads(10, [&](int thread) {
    if (thread >= 8) {
      for (int i = 0; i < 500; ++i) toggle(i % kSensors);
      return;
    }
    for (int i = 0; i < kSamplesEach; ++i) {
      const int sensor = (i * 7 + thread) % kSensors;
      const std::shared_lock lock(toggles[sensor]);
      engine_->LogSensorLatency(id(sensor), i);
    }
  });
  for (int sensor = 0; sensor < kSensors; ++sensor) toggle(sensor);

  int samples = 0;
  for (const std::string& atom : Delivered()) {
    int high = 0;
    int count = 0;
    if (std::sscanf(atom.c_str(), "100242 i%d i0 i1 l-1 i%d", &high, &count) == 2) samples += count;
  }
  EXPECT_EQ(samples, 8 * kSamplesEach);
}

using OneShotTest = SensorStatusTest;

TEST_F(OneShotTest, EachEventIsOneAtomBitForBit) {
  SensorVela::TarnVelaProxEvent event{1,     2,     3,     4,  5,  6,     7,     8,    9.5F,
                                      10.5F, 11.5F, -0.0F, 13, 14, 15.5F, 16.5F, 17.5F};
  event.float_6 = std::bit_cast<float>(0x7fc01234);
  engine_->LogSensorProxEvent(event);
  engine_->ReportHalLatency(SensorVela::HalOperation{4}, kSensor, 1'500'000);
  engine_->ReportHalLatency(SensorVela::HalOperation{-1}, {0xFFFFFFFF, -2}, kMin);
  engine_->ReportFirmwareState(7, SensorVela::FirmwareState{3}, -5);
  EXPECT_EQ(Delivered(),
            (Texts{"100133 i1 i2 i3 i4 i5 i6 i7 i8 f9.5 f10.5 f11.5 f-0 i13 i14 f15.5 f16.5 "
                   "fnan:7fc01234",
                   "100243 i16 i2 i4 l1500000", "100243 i-1 i-2 i-1 l-9223372036854775808",
                   "100244 i7 i3 i-5"}));
}

}  // namespace
}  // namespace sensorvela::testing
