// Runs engines over the device's own log and clock libraries. Prints each line that the log
// receives, as priority, tag and text, for scripts/checks/device_libraries. Fails if the engine's
// times are not those of the boot-time clock.
#include <android/log.h>
#include <time.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/stats_service.h>

namespace {

namespace simulated = sensorvela::simulated;
using aidl::android::frameworks::stats::VendorAtomValue;
using sensorvela::testkit::kStatsInstance;
using sensorvela::testkit::StatsService;
using NoSupplier = std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>;

constexpr SensorVela::SensorId kSensor = {0x10, 1};
constexpr std::size_t kErrors = 11;  // One more than the cap.

void PrintLine(const __android_logger_data* line, const char* text) {
  const char priority = line->priority == ANDROID_LOG_INFO    ? 'I'
                        : line->priority == ANDROID_LOG_ERROR ? 'E'
                                                              : '?';
  std::printf("%c %s %s\n", priority, line->tag, text);
}

std::int64_t BootTimeNs() {
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// The service is there and refuses the first report. The device does not seem to declare it.
void ReportErrors() {
  const auto service = ndk::SharedRefBase::make<StatsService>();
  service->AnswerNext(1, sensorvela::testkit::Answer::kError);
  simulated::RegisterService(kStatsInstance, service);
  simulated::UndeclareService(kStatsInstance);
  SensorVela engine{NoSupplier()};
  for (std::size_t i = 0; i < kErrors; ++i) {
    engine.LogSensorHalError(kSensor, SensorVela::HalCall{3}, -22);
    engine.LogSensorRuntimeError(kSensor, SensorVela::ErrorType{1}, 7);
  }
  service->WaitForAtoms(2 * (kErrors - 1));
}

/// The service manager fails while the engine waits at its start, and when the queue is to be sent.
void FindNoService() {
  std::mutex mutex;
  std::condition_variable changed;
  bool waits = false;
  int failures = 0;
  const simulated::ScopedLookupObserver observer([&](simulated::LookupStep step) {
    const std::lock_guard lock(mutex);
    if (step == simulated::LookupStep::kWaits) waits = true;
    if (step == simulated::LookupStep::kFindsNone) ++failures;
    changed.notify_all();
  });
  simulated::DeclareService(kStatsInstance);
  const SensorVela engine{NoSupplier()};
  {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return waits; });
  }
  simulated::FailServiceManager(kStatsInstance);
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return failures >= 2; });
}

/// A sensor that was never enabled has zero as the time of its enable, so the latency of its first
/// sample is the clock itself.
bool ReadsTheClock() {
  const auto service = ndk::SharedRefBase::make<StatsService>();
  simulated::DeclareService(kStatsInstance);
  simulated::RegisterService(kStatsInstance, service);
  SensorVela engine{NoSupplier()};
  const std::int64_t before_ns = BootTimeNs();
  engine.LogSensorLatency(kSensor, 0);
  const std::int64_t after_ns = BootTimeNs();
  service->WaitForAtoms(1);
  const StatsService::VendorAtom atom = service->TakeAtoms().at(0);
  const std::int64_t now_ns = atom.values.at(2).get<VendorAtomValue::longValue>();
  if (before_ns <= now_ns && now_ns <= after_ns) return true;
  std::fprintf(stderr, "error: elapsed realtime is %lld ns, and not from %lld to %lld ns\n",
               static_cast<long long>(now_ns), static_cast<long long>(before_ns),
               static_cast<long long>(after_ns));
  return false;
}

}  // namespace

int main() {
  __android_log_set_logger(PrintLine);
  ReportErrors();
  simulated::ResetServices();
  FindNoService();
  simulated::ResetServices();
  return ReadsTheClock() ? 0 : 1;
}
