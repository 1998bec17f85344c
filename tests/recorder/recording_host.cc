// A host on the real clocks that lives until its input ends, or until it is killed.
#include <unistd.h>

#include <memory>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/stats_service.h>

#include "tests/recorder/recording_host.h"

int main() {
  namespace simulated = sensorvela::simulated;
  namespace testkit = sensorvela::testkit;
  simulated::RegisterService(testkit::kStatsInstance,
                             ndk::SharedRefBase::make<testkit::StatsService>());
  SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
  sensorvela::testing::CallMethodsOfEveryKind(engine);
  char byte = 0;
  while (read(STDIN_FILENO, &byte, 1) > 0) continue;
}
