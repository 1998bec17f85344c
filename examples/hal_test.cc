// A unit test of a HAL that uses the library, with GoogleTest and the test kit. It needs no device
// and no waiting: in virtual time the six hours of a cycle pass at once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utils/SystemClock.h>

#include <chrono>
#include <memory>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/world.h>

class Diagnostics : public SensorVela::SystemDiagnosticsSupplier {
  SensorVela::ProcessorDiag GetProcessorDiagnostics() override { return {1, 2, 3, 4}; }
  SensorVela::QueueStress GetQueueStressType1() override { return {}; }
  SensorVela::QueueStress GetQueueStressType2() override { return {}; }
  SensorVela::QueueStress GetQueueStressType3() override { return {}; }
};

// The HAL under test: a light sensor on a bus that can fail.
class LightHal {
 public:
  int Activate(bool enable) {
    if (bus_error != 0) {
      vela_.LogSensorHalError(kLight, kActivate, bus_error);
      return bus_error;
    }
    enable ? vela_.ReportHalSensorEnabled(kLight, 20'000'000)
           : vela_.ReportHalSensorDisabled(kLight);
    return 0;
  }

  void Deliver(long long timestamp_ns) { vela_.LogSensorLatency(kLight, timestamp_ns); }

  int bus_error = 0;

 private:
  static constexpr SensorVela::SensorId kLight = {0x10, 1};
  static constexpr SensorVela::HalCall kActivate{1};

  SensorVela vela_{std::make_unique<Diagnostics>()};
};

using ::testing::ElementsAre;
using ::testing::SizeIs;

// The world is constructed first: it provides the clocks, the log and the stats service of the
// HAL's engine.
class LightHalTest : public ::testing::Test {
 protected:
  // A test may leave the service away: no wait for it holds up the HAL's destructor.
  ~LightHalTest() override { world.FailServiceManager(); }

  sensorvela::testkit::World world;
  LightHal hal;
};

TEST_F(LightHalTest, ReportsAnActivationThatFails) {
  hal.bus_error = -5;
  EXPECT_EQ(hal.Activate(true), -5);
  EXPECT_THAT(world.TakeAtomTexts(),
              ElementsAre("SensorHalErrorDetected{sensor_id_high=16, sensor_id_low=1, hal_call=1, "
                          "error_code=-5}"));
}

TEST_F(LightHalTest, ReportsTheSamplesOfAStretch) {
  hal.Activate(true);
  world.time.RunFor(std::chrono::milliseconds(23));
  hal.Deliver(20'000'000);  // 3 ms after its timestamp: the second band.
  world.TakeAtomTexts();    // The enable's and the first sample's.
  hal.Activate(false);
  EXPECT_THAT(world.TakeAtomTexts(),
              ElementsAre("HalSensorStateChanged{sensor_id_high=16, sensor_id_low=1, state=1, "
                          "sampling_period_ns=-1, sample_count=1, late_sample_count=0, "
                          "latency_histogram=[0, 1, 0, 0, 0]}"));
}

TEST_F(LightHalTest, GoesOnWhileTheServiceIsAway) {
  world.UnregisterService();
  EXPECT_EQ(hal.Activate(true), 0);
  EXPECT_THAT(world.TakeAtomTexts(), SizeIs(0));
  world.RegisterService();
  EXPECT_THAT(world.TakeAtomTexts(), SizeIs(1));
}

TEST_F(LightHalTest, UploadsItsDiagnosticsEverySixHours) {
  world.time.RunFor(std::chrono::hours(6));
  EXPECT_THAT(world.TakeAtomTexts(), SizeIs(4));
}
