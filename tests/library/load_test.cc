// Tests the engine under load: every atom is accounted for, and all memory is freed.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/testkit/atom_catalogue.h>
#include "tests/library/call_counts.h"
#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

using android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorHalLatencyRecorded;

#if defined(__arm__)
constexpr int kEvents = 80'000;  // Under emulation.
#else
constexpr int kEvents = kCallsAreCounted ? 1'000'000 : 80'000;
#endif
constexpr int kThreads = 8;

/// Counts the delivered and dropped atoms, on the reporter thread: at each report, and at each log
/// line that says that a batch was dropped.
class AtomCounts {
 public:
  explicit AtomCounts(const simulated::VirtualTime& time) : time_(time) {}

  void OnReport(const VendorAtom& atom) {
    ++delivered;
    taken_ = SensorVelaTestPeer::AtomsTaken(*engine, time_);
    if (atom.atomId == SensorHalLatencyRecorded::kAtomId) CheckSequence(atom);
  }

  /// The atoms that the reporter thread has taken since the last report or drop are lost.
  void OnDrop() {
    const std::int64_t taken = SensorVelaTestPeer::AtomsTaken(*engine, time_);
    dropped += taken - std::exchange(taken_, taken);
    ++drops_;
  }

  SensorVela* engine = nullptr;
  std::int64_t delivered = 0;
  std::int64_t dropped = 0;
  int out_of_sequence = 0;

 private:
  /// Each thread numbers its atoms: they arrive in order, and only a logged drop explains a gap.
  void CheckSequence(const VendorAtom& atom) {
    const std::int32_t thread =
        testkit::FindValue(atom, "sensor_id_high")
            ->get<aidl::android::frameworks::stats::VendorAtomValue::intValue>();
    const std::int64_t number =
        testkit::FindValue(atom, "latency_ns")
            ->get<aidl::android::frameworks::stats::VendorAtomValue::longValue>();
    auto& last = last_[static_cast<std::size_t>(thread)];
    const bool is_next = number == last.number + 1;
    const bool is_explained = number > last.number && drops_ > last.drops;
    if (!is_next && !is_explained) ++out_of_sequence;
    last = {number, drops_};
  }

  struct Last {
    std::int64_t number = -1;
    int drops = 0;
  };

  const simulated::VirtualTime& time_;
  std::int64_t taken_ = 0;
  int drops_ = 0;
  std::array<Last, kThreads> last_;
};

TEST(LoadTest, EveryAtomIsDeliveredOrDroppedWithALineOrDiscardedAtTheEnd) {
  simulated::VirtualTime time;
  AtomCounts counts(time);
  std::shared_ptr<testkit::StatsService> service;
  service =
      ndk::SharedRefBase::make<testkit::StatsService>([&](const VendorAtom& atom, testkit::Answer) {
        counts.OnReport(atom);
        service->TakeAtoms();  // They would fill the memory.
      });
  const simulated::ScopedLogSink sink([&](int, std::string_view, std::string_view text) {
    if (text == "Failed to get IStats service. Atoms are dropped.") counts.OnDrop();
  });
  const std::string instance = testkit::kStatsInstance;
  simulated::DeclareService(instance);  // The reporter thread waits for it and counts nothing yet.
  auto engine = testkit::MakeEngine(SupplierKind::kNone, nullptr);
  counts.engine = engine.get();
  const std::function<void()> kOutages[] = {[&] { simulated::RefuseService(instance); },
                                            [&] { simulated::UnregisterService(instance); },
                                            [&] { simulated::RegisterService(instance, service); },
                                            [&] { simulated::AllowService(instance); },
                                            [&] { simulated::ReleaseServiceWaits(instance); }};

  OnThreads(kThreads, [&](int thread) {
    const SensorVela::SensorId sensor = {static_cast<std::uint32_t>(thread), 0};
    for (int i = 0; i < kEvents / kThreads / 4; ++i) {
      if (i % 100 == thread) kOutages[i / 100 % 5]();
      engine->LogSensorLatency(sensor, i);
      engine->LogSensorHalError(sensor, SensorVela::HalCall{5}, i);
      engine->ReportHalLatency(SensorVela::HalOperation{1}, sensor, i);
      engine->ReportHalSensorDisabled(sensor);
    }
  });

  // When the engine is destroyed, the last batch waits for the service and more atoms are queued.
  simulated::AllowService(instance);
  simulated::RegisterService(instance, service);
  time.WaitUntilAtRest();
  simulated::UnregisterService(instance);
  const auto report = [&] { engine->ReportFirmwareState(1, SensorVela::FirmwareState{1}, 1); };
  report();
  time.WaitUntilSettled();
  for (int i = 0; i < 3; ++i) report();
  const auto queued = static_cast<std::int64_t>(time.Notifications());
  const std::int64_t discarded = queued - SensorVelaTestPeer::AtomsTaken(*engine, time);
  testkit::DestroyEngine(
      time, [&] { engine.reset(); }, [&] { simulated::ReleaseServiceWaits(instance); });
  simulated::ResetServices();

  // First samples, errors up to the cap, latencies and disables, and the last four atoms.
  EXPECT_EQ(queued, kThreads + 10 + kEvents / 2 + 4);
  EXPECT_EQ(discarded, 3);
  EXPECT_EQ(queued, counts.delivered + counts.dropped + discarded);
  EXPECT_EQ(counts.out_of_sequence, 0);
}

TEST(LoadTest, AYearOfCyclesLeavesTheHeapAsItWas) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap";
  World world;
  world.StartEngine();
  std::int64_t after_the_second = 0;
  constexpr int kCycles = 1'460;
  for (int cycle = 1; cycle <= kCycles; ++cycle) {
    for (std::uint32_t sensor = 0; sensor < 20; ++sensor) {
      world.engine().ReportHalSensorEnabled({sensor, 0}, 5'000'000);
      world.engine().LogSensorLatency({sensor, 0}, world.time.Now().count());
      world.engine().ReportHalSensorDisabled({sensor, 0});
      world.engine().LogSensorRuntimeError({sensor, 0}, SensorVela::ErrorType{}, 0);
    }
    world.time.RunTo(cycle * 6h);
    ASSERT_GE(world.TakeHistory().size(), 80U);
    world.TakeAtoms();
    if (cycle == 2) after_the_second = HeapBytesInUse();
  }
  EXPECT_EQ(HeapBytesInUse(), after_the_second);
}

}  // namespace
}  // namespace sensorvela::testing
