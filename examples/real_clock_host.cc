// A host with the real clocks and a stats service of its own in the same process. It shows the
// library at work without a device and without virtual time.
#include <aidl/android/frameworks/stats/BnStats.h>
#include <utils/SystemClock.h>

#include <cstdio>
#include <future>
#include <memory>
#include <string>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/atom_text.h>
#include <sensorvela/testkit/stats_service.h>

using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::VendorAtom;

// Prints the atoms that it receives, on the thread that reports them.
class PrintingService : public BnStats {
 public:
  explicit PrintingService(int atoms) : missing_(atoms) {}

  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    std::puts(sensorvela::testkit::AtomText(atom).c_str());
    if (--missing_ == 0) all_received_.set_value();
    return ndk::ScopedAStatus::ok();
  }

  void WaitForAll() { all_received_.get_future().wait(); }

 private:
  int missing_;
  std::promise<void> all_received_;
};

int main() {
  const auto service = ndk::SharedRefBase::make<PrintingService>(3);
  sensorvela::simulated::RegisterService(sensorvela::testkit::kStatsInstance, service);

  SensorVela engine(std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>{});
  const SensorVela::SensorId accelerometer = {0x10, 1};
  engine.ReportHalSensorEnabled(accelerometer, 20'000'000);
  engine.LogSensorLatency(accelerometer, android::elapsedRealtimeNano());
  engine.ReportHalSensorDisabled(accelerometer);

  // The engine's destructor discards what has not been sent.
  service->WaitForAll();
}
