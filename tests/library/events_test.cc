// Tests what the simulation cannot: counters at their wrap, and the order of a line and its atom.
#include <cstdint>
#include <vector>

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

TEST_F(EventsTest, AnErrorIsLoggedBeforeItsAtomIsQueued) {
  std::vector<std::uint64_t> queued;  // At each line.
  const simulated::ScopedLogSink sink([&](auto...) { queued.push_back(time.Notifications()); });
  engine().LogSensorHalError(kSensor, SensorVela::HalCall{1}, 0);
  engine().LogSensorRuntimeError(kSensor, SensorVela::ErrorType{1}, 0);
  EXPECT_THAT(queued, ElementsAre(0, 1));
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

}  // namespace
}  // namespace sensorvela::testing
