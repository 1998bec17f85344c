// Tests an engine on the real clocks. Built twice: with the workstation's implementation of
// platform/sync.h, and with the device's, which replaces it at link time.
#include <gtest/gtest.h>
#include <pthread.h>
#include <utils/SystemClock.h>

#include <array>
#include <chrono>
#include <memory>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/stats_service.h>

namespace {

using sensorvela::platform::MonotonicClock;

static_assert(MonotonicClock::is_steady);

TEST(RealClockTest, AnAtomWakesTheReporterAndSoDoesTheEnd) {
  std::array<char, 16> thread_name = {};
  const auto service = ndk::SharedRefBase::make<sensorvela::testkit::StatsService>(
      [&](const auto& /*atom*/, auto /*answer*/) {
        pthread_getname_np(pthread_self(), thread_name.data(), thread_name.size());
      });
  sensorvela::simulated::RegisterService(sensorvela::testkit::kStatsInstance, service);
  const auto monotonic = MonotonicClock::now();
  const auto elapsed_ns = android::elapsedRealtimeNano();
  {
    SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
    engine.ReportFirmwareState(1, SensorVela::FirmwareState{2}, 3);
    service->WaitForAtoms(1);
    EXPECT_EQ(service->TakeAtoms().at(0).atomId, 100244);
  }  // The thread sleeps for six hours unless it is woken.
  EXPECT_STREQ(thread_name.data(), "sensor-vela");
  EXPECT_GT(MonotonicClock::now(), monotonic);
  EXPECT_GT(android::elapsedRealtimeNano(), elapsed_ns);
}

TEST(RealClockTest, AWaitEndsAtItsDeadlineAndNotBefore) {
  sensorvela::platform::Mutex mutex;
  sensorvela::platform::CondVar condition;
  const sensorvela::platform::MutexLock lock(mutex);
  const auto deadline = MonotonicClock::now() + std::chrono::milliseconds(20);
  int waits = 0;
  while (MonotonicClock::now() < deadline) {
    condition.WaitUntil(mutex, deadline);
    ++waits;
  }
  EXPECT_LE(waits, 3);  // All but one were spurious wake-ups.
  condition.WaitUntil(mutex, deadline);
}

}  // namespace
