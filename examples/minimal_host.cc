// The shortest complete host of the library. The test kit replaces the device, so that the program
// runs on a workstation.
#include <utils/SystemClock.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/testkit/world.h>

class Diagnostics : public SensorVela::SystemDiagnosticsSupplier {
 public:
  SensorVela::ProcessorDiag GetProcessorDiagnostics() override { return {1, 2, 3, 4}; }
  SensorVela::QueueStress GetQueueStressType1() override { return {}; }
  SensorVela::QueueStress GetQueueStressType2() override { return {}; }
  SensorVela::QueueStress GetQueueStressType3() override { return {}; }
};

void RunSensors(sensorvela::simulated::VirtualTime& time) {
  // Starts the reporter thread and waits for nothing; the engine owns the supplier.
  SensorVela engine(std::make_unique<Diagnostics>());
  const SensorVela::SensorId accelerometer = {0x10, 1};
  engine.ReportHalSensorEnabled(accelerometer, 20'000'000);  // A sample every 20 ms.
  engine.LogSensorLatency(accelerometer, android::elapsedRealtimeNano());
  engine.LogSensorHalError(accelerometer, SensorVela::HalCall{3}, -22);
  engine.ReportHalSensorDisabled(accelerometer);

  // Six hours later the cycle ends and the diagnostics are uploaded.
  time.RunTo(std::chrono::hours(6));
}  // Stops the thread; atoms that have not been sent by now are discarded.

int main() {
  sensorvela::testkit::World world;  // The device has all of this already.
  RunSensors(world.time);
  for (const std::string& atom : world.TakeAtomTexts()) std::puts(atom.c_str());
}
