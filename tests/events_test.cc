// What the simulation does not reach: many threads at once and counters at their wrap.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <shared_mutex>
#include <string>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

constexpr SensorVela::SensorId kSensor = {16, 2};

class EventsTest : public ::testing::Test, public World {
 protected:
  EventsTest() {
    Register();
    Start();
    Seen();
  }
};

TEST_F(EventsTest, ThreadsThatReportTheSameErrorShareItsCap) {
  constexpr int kReportsEach = 50;
  OnThreads(8, [this](int) {
    for (int i = 0; i < kReportsEach; ++i) {
      engine->LogSensorHalError({1, 1}, SensorVela::HalCall{-7}, 0);
    }
  });
  Texts seen = Seen();
  EXPECT_EQ(std::erase(seen, "100024 i1 i1 i-7 i0"), 10U);
  EXPECT_EQ(std::erase(seen, "I Reporting HAL call [-7] error [0] on sensor [0x00000001]."), 10U);
  Texts blocked;  // Counted and logged under one lock, and so in order.
  for (int count = 11; count <= 8 * kReportsEach; ++count) {
    blocked.push_back("E HAL Error [-7] has occurred [" + std::to_string(count) +
                      "] times in current cycle, upload blocked due to cap [10] met.");
  }
  EXPECT_EQ(seen, blocked);
}

TEST_F(EventsTest, CountersWrapAndZeroIsAFirstSampleAgain) {
  engine->ReportHalSensorEnabled(kSensor, -1);
  SensorVelaTestPeer::SetCounters(*engine, kSensor, 0xFFFFFFFF);
  time.RunTo(1h);
  Seen();
  engine->LogSensorLatency(kSensor, 1);
  engine->ReportHalSensorDisabled(kSensor);
  engine->LogSensorLatency(kSensor, 1);
  EXPECT_EQ(Seen(),
            (Texts{"100242 i16 i2 i1 l-1 i0 i0 [ 0 0 0 0 0 ]", "100245 i16 i2 l3600000000000"}));
}

TEST_F(EventsTest, ThreadsThatSampleSharedSensorsLoseNoSample) {
  constexpr int kSensors = 64;
  constexpr int kSamplesEach = 4'000;
  // A sensor's disable and enable are one step for its samples, so that none falls between them.
  std::shared_mutex toggles[kSensors];
  const auto id = [](int sensor) { return SensorVela::SensorId{static_cast<unsigned>(sensor), 0}; };
  const auto toggle = [&](int sensor) {
    const std::lock_guard lock(toggles[sensor]);
    engine->ReportHalSensorDisabled(id(sensor));
    engine->ReportHalSensorEnabled(id(sensor), 0);
  };
  OnThreads(10, [&](int thread) {
    if (thread >= 8) {
      for (int i = 0; i < 500; ++i) toggle(i % kSensors);
      return;
    }
    for (int i = 0; i < kSamplesEach; ++i) {
      const int sensor = (i * 7 + thread) % kSensors;
      const std::shared_lock lock(toggles[sensor]);
      engine->LogSensorLatency(id(sensor), i);
    }
  });
  for (int sensor = 0; sensor < kSensors; ++sensor) toggle(sensor);

  int samples = 0;
  for (const std::string& atom : Seen()) {
    int high = 0;
    int count = 0;
    if (std::sscanf(atom.c_str(), "100242 i%d i0 i1 l-1 i%d", &high, &count) == 2) samples += count;
  }
  EXPECT_EQ(samples, 8 * kSamplesEach);
}

}  // namespace
}  // namespace sensorvela::testing
