// Tests what the simulation cannot: many threads at once and counters at their wrap.
#include <cstdint>
#include <mutex>
#include <shared_mutex>
#include <string>

#include <sensorvela/testkit/atom_catalogue.h>

#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

constexpr SensorVela::SensorId kSensor = {16, 2};

class EventsTest : public ::testing::Test, public World {
 protected:
  EventsTest() {
    StartEngine();
    TakeHistory();
  }
};

TEST_F(EventsTest, ThreadsThatReportTheSameErrorShareItsCap) {
  constexpr int kReportsEach = 50;
  OnThreads(8, [this](int) {
    for (int i = 0; i < kReportsEach; ++i) {
      engine().LogSensorHalError({1, 1}, SensorVela::HalCall{-7}, 0);
    }
  });
  Texts history = TakeHistory();
  EXPECT_EQ(std::erase(history,
                       "SensorHalErrorDetected{sensor_id_high=1, sensor_id_low=1, hal_call=-7, "
                       "error_code=0}"),
            10U);
  EXPECT_EQ(std::erase(history, "I Reporting HAL call [-7] error [0] on sensor [0x00000001]."),
            10U);
  Texts blocked;  // In order: one lock is held for the count and the log line.
  for (int count = 11; count <= 8 * kReportsEach; ++count) {
    blocked.push_back("E HAL Error [-7] has occurred [" + std::to_string(count) +
                      "] times in current cycle, upload blocked due to cap [10] met.");
  }
  EXPECT_EQ(history, blocked);
}

TEST_F(EventsTest, CountersWrapAndZeroIsAFirstSampleAgain) {
  engine().ReportHalSensorEnabled(kSensor, -1);
  SensorVelaTestPeer::SetCounters(engine(), kSensor, 0xFFFFFFFF);
  time.RunTo(1h);
  TakeHistory();
  engine().LogSensorLatency(kSensor, 1);
  engine().ReportHalSensorDisabled(kSensor);
  engine().LogSensorLatency(kSensor, 1);
  EXPECT_THAT(TakeHistory(),
              ElementsAre("HalSensorStateChanged{sensor_id_high=16, sensor_id_low=2, state=1, "
                          "sampling_period_ns=-1, sample_count=0, late_sample_count=0, "
                          "latency_histogram=[0, 0, 0, 0, 0]}",
                          "SensorFirstSampleReported{sensor_id_high=16, sensor_id_low=2, "
                          "first_sample_latency_ns=3600000000000}"));
}

TEST_F(EventsTest, ThreadsThatSampleSharedSensorsLoseNoSample) {
  constexpr int kSensors = 64;
  constexpr int kSamplesEach = 4'000;
  // Keeps a sensor's samples from arriving between its disable and its enable.
  std::shared_mutex toggles[kSensors];
  const auto id = [](int sensor) { return SensorVela::SensorId{static_cast<unsigned>(sensor), 0}; };
  const auto toggle = [&](int sensor) {
    const std::lock_guard lock(toggles[sensor]);
    engine().ReportHalSensorDisabled(id(sensor));
    engine().ReportHalSensorEnabled(id(sensor), 0);
  };
  OnThreads(10, [&](int thread) {
    if (thread >= 8) {
      for (int i = 0; i < 500; ++i) toggle(i % kSensors);
      return;
    }
    for (int i = 0; i < kSamplesEach; ++i) {
      const int sensor = (i * 7 + thread) % kSensors;
      const std::shared_lock lock(toggles[sensor]);
      engine().LogSensorLatency(id(sensor), i);
    }
  });
  for (int sensor = 0; sensor < kSensors; ++sensor) toggle(sensor);

  using Value = aidl::android::frameworks::stats::VendorAtomValue;
  int samples = 0;
  for (const VendorAtom& atom : TakeAtoms()) {
    const auto int_of = [&](const char* name) {
      const Value* value = testkit::FindValue(atom, name);
      return value == nullptr ? 0 : value->get<Value::intValue>();
    };
    if (int_of("state") == 1) samples += int_of("sample_count");
  }
  EXPECT_EQ(samples, 8 * kSamplesEach);
}

}  // namespace
}  // namespace sensorvela::testing
