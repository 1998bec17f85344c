// The engine under load: no atom unaccounted for, no byte left behind.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <random>

#include "tests/heap_counter.h"
#include "tests/test_support.h"

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SENSORVELA_SLOW_BUILD
#endif
#endif

namespace sensorvela::testing {
namespace {

#if defined(SENSORVELA_SLOW_BUILD) || defined(__arm__)
constexpr int kEvents = 80'000;
#else
constexpr int kEvents = 1'000'000;
#endif
constexpr int kThreads = 8;

class CountingStats : public aidl::android::frameworks::stats::IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom&) override {
    ++reports;
    return ndk::ScopedAStatus::ok();
  }
  std::int64_t reports = 0;  // Of the one reporter thread.
};

TEST(LoadTest, EveryAtomIsDeliveredOrDroppedWithALineOrDiscardedAtTheEnd) {
  host::VirtualTime time;
  const auto stats = std::make_shared<CountingStats>();
  host::DeclareService(kInstance);
  std::unique_ptr<SensorVela> engine;
  std::int64_t dropped = 0;
  const host::ScopedLogSink sink([&](int, std::string_view, std::string_view text) {
    if (text != "Failed to get IStats service. Atoms are dropped.") return;
    // Logged by the reporter thread, which has taken all but what is queued and has now lost what
    // it took last.
    const std::int64_t taken = SensorVelaTestPeer::AtomsTaken(*engine, time);
    dropped = taken - stats->reports;
  });
  engine =
      std::make_unique<SensorVela>(std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>(nullptr));

  std::atomic<bool> done = false;
  std::thread outages([&] {
    std::mt19937 random(1);
    while (!done) {
      switch (random() % 4) {
        case 0:
          host::DeclareService(kInstance);
          break;
        case 1:
          host::UndeclareService(kInstance);
          break;
        case 2:
          host::UnregisterService(kInstance);
          break;
        default:
          host::RegisterService(kInstance, stats);
      }
      std::this_thread::yield();
    }
  });
  OnThreads(kThreads, [&](int thread) {
    const SensorVela::SensorId sensor = {static_cast<std::uint32_t>(thread), 0};
    for (int i = 0; i < kEvents / kThreads; i += 4) {
      engine->LogSensorLatency(sensor, i);
      engine->LogSensorHalError(sensor, SensorVela::HalCall{5}, i);
      engine->ReportHalLatency(SensorVela::HalOperation{1}, sensor, i);
      engine->ReportHalSensorDisabled(sensor);
    }
  });
  done = true;
  outages.join();

  // The last batch waits for the service, and behind it there is more, when the engine is
  // destroyed.
  host::RegisterService(kInstance, stats);
  time.WaitUntilAtRest();
  host::UnregisterService(kInstance);
  host::DeclareService(kInstance);
  engine->ReportFirmwareState(1, SensorVela::FirmwareState{1}, 1);
  time.WaitUntilSettled();
  for (int i = 0; i < 3; ++i) engine->ReportFirmwareState(1, SensorVela::FirmwareState{1}, 1);
  const auto queued = static_cast<std::int64_t>(time.Notifications());
  const std::int64_t discarded = queued - SensorVelaTestPeer::AtomsTaken(*engine, time);
  std::thread destruction([&] { engine->~SensorVela(); });
  time.WaitForNotifications(static_cast<std::uint64_t>(queued) + 1);
  host::ReleaseServiceWaits(kInstance);
  destruction.join();
  ::operator delete(engine.release());
  host::ResetServices();

  // First samples, errors up to the cap, latencies, disabled atoms, and the last four.
  EXPECT_EQ(queued, kThreads + 10 + kEvents / 2 + 4);
  EXPECT_EQ(discarded, 3);
  EXPECT_EQ(queued, stats->reports + dropped + discarded);
}

TEST(LoadTest, AYearOfCyclesLeavesTheHeapAsItWas) {
  World world;
  world.Register();
  world.Start();
  std::int64_t after_the_second = 0;
  constexpr int kCycles = 1'460;
  for (int cycle = 1; cycle <= kCycles; ++cycle) {
    for (std::uint32_t sensor = 0; sensor < 20; ++sensor) {
      world.engine->ReportHalSensorEnabled({sensor, 0}, 5'000'000);
      world.engine->LogSensorLatency({sensor, 0}, world.time.Now().count());
      world.engine->ReportHalSensorDisabled({sensor, 0});
      world.engine->LogSensorRuntimeError({sensor, 0}, SensorVela::ErrorType{}, 0);
    }
    world.time.RunTo(cycle * 6h);
    ASSERT_GE(world.Seen().size(), 80U);
    if (cycle == 2) after_the_second = HeapBytesInUse();
  }
  EXPECT_EQ(HeapBytesInUse(), after_the_second);
}

}  // namespace
}  // namespace sensorvela::testing
