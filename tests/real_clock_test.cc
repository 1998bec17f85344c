// An engine on the real clocks. Built twice: over the workstation's side of the seam and over the
// device's, which takes its place at link time.
#include <gtest/gtest.h>
#include <utils/SystemClock.h>

#include <future>
#include <memory>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>

namespace {

using aidl::android::frameworks::stats::VendorAtom;
using sensorvela::platform::MonotonicClock;

class OneReport : public aidl::android::frameworks::stats::IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    id.set_value(atom.atomId);
    return ndk::ScopedAStatus::ok();
  }
  std::promise<int> id;
};

TEST(RealClockTest, AnAtomWakesTheReporterAndSoDoesTheEnd) {
  const auto service = std::make_shared<OneReport>();
  sensorvela::simulated::RegisterService("android.frameworks.stats.IStats/default", service);
  const auto monotonic = MonotonicClock::now();
  const auto elapsed_ns = android::elapsedRealtimeNano();
  {
    SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
    engine.ReportFirmwareState(1, SensorVela::FirmwareState{2}, 3);
    EXPECT_EQ(service->id.get_future().get(), 100244);
  }  // The thread sleeps for six hours unless it is woken.
  EXPECT_GT(MonotonicClock::now(), monotonic);
  EXPECT_GT(android::elapsedRealtimeNano(), elapsed_ns);
}

TEST(RealClockTest, AWaitEndsAtADeadlineThatHasPassed) {
  sensorvela::platform::Mutex mutex;
  sensorvela::platform::CondVar condition;
  const sensorvela::platform::MutexLock lock(mutex);
  condition.WaitUntil(mutex, MonotonicClock::now());
}

}  // namespace
