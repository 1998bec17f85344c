// Counts exactly what a call costs its caller: allocations, locks, clock readings and log lines.
#include <aidl/android/frameworks/stats/BnStats.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <utils/SystemClock.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <sensorvela/histogram/stats_histogram.h>

#include "atoms/all_records.h"
#include "tests/library/call_counts.h"
#include "tests/library/test_support.h"

namespace {

// Counted per thread, because the reporter thread logs, too.
thread_local int clock_readings = 0;
thread_local int log_lines = 0;

}  // namespace

// These replace the simulated platform's functions, also for the library.
std::int64_t android::elapsedRealtimeNano() {
  ++clock_readings;
  return 0;
}
int __android_log_print(int, const char*, const char*, ...) {
  ++log_lines;
  return 1;
}

namespace sensorvela::testing {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

struct Cost {
  CallCounts calls;
  int clock_readings = 0;
  int log_lines = 0;

  bool operator==(const Cost&) const = default;
};

void PrintTo(const Cost& cost, std::ostream* out) {
  *out << cost.calls.allocations << " allocations, " << cost.calls.locks << " locks, "
       << cost.clock_readings << " clock readings, " << cost.log_lines << " log lines";
}

Cost CostOf(const std::function<void()>& call) {
  const CallCounts before = CallsOfThisThread();
  clock_readings = 0;
  log_lines = 0;
  call();
  const CallCounts after = CallsOfThisThread();
  return {{after.allocations - before.allocations, after.locks - before.locks},
          clock_readings,
          log_lines};
}

constexpr SensorVela::SensorId kSensor = {1, 1};

TEST(CallCostTest, OfEachEvent) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap and the locks";
  const auto sample = [](SensorVela& it) { it.LogSensorLatency(kSensor, 0); };
  const auto enable = [](SensorVela& it) { it.ReportHalSensorEnabled(kSensor, 1); };
  const auto hal_error = [](SensorVela& it) { it.LogSensorHalError(kSensor, {}, 0); };
  const auto runtime_error = [](SensorVela& it) { it.LogSensorRuntimeError(kSensor, {}, 0); };
  VendorAtom outside_atom;
  outside_atom.values.resize(20);
  struct {
    const char* what;
    int times_before;
    std::function<void(SensorVela&)> call;
    Cost cost;
  } const kCases[] = {
      {"a sample", 1, sample, {{0, 1}, 1, 0}},
      // The very first sensor: its atom, its status and the table of statuses.
      {"a first sensor", 0, sample, {{3, 2}, 1, 0}},
      {"a first error", 0, hal_error, {{3, 2}, 0, 1}},
      {"an error past the cap", 10, hal_error, {{0, 1}, 0, 1}},
      {"another past the cap", 10, runtime_error, {{0, 1}, 0, 1}},
      {"a HAL error", 1, hal_error, {{1, 2}, 0, 1}},
      {"a runtime error", 1, runtime_error, {{1, 2}, 0, 1}},
      {"an enable", 1, enable, {{1, 2}, 1, 0}},
      {"a disable", 1, [](auto& it) { it.ReportHalSensorDisabled(kSensor); }, {{2, 2}, 0, 0}},
      {"a first sample", 0, [](auto& it) { it.ReportFirstSample(kSensor, 1); }, {{1, 1}, 0, 0}},
      {"a HAL latency", 0, [](auto& it) { it.ReportHalLatency({}, kSensor, 1); }, {{1, 1}, 0, 0}},
      {"a firmware state", 0, [](auto& it) { it.ReportFirmwareState(1, {}, 1); }, {{1, 1}, 0, 0}},
      {"a proximity report", 0, [](auto& it) { it.LogSensorProxEvent({}); }, {{1, 1}, 0, 0}},
      {"a copy", 0, [&](auto& it) { it.ReportVendorAtomAsync(outside_atom); }, {{1, 1}, 0, 0}}};
  for (const auto& [what, times_before, call, cost] : kCases) {
    // Without virtual time, which has locks of its own. The reporter thread waits for the service
    // and does not touch the queue.
    simulated::DeclareService(testkit::kStatsInstance);
    auto engine = testkit::MakeEngine(SupplierKind::kNone, nullptr);
    engine->ReportFirmwareState(1, {}, 1);  // Allocates a block of the queue that holds more atoms.
    for (int i = 0; i < times_before; ++i) call(*engine);
    EXPECT_EQ(CostOf([&] { call(*engine); }), cost) << what;
    simulated::FailServiceManager(testkit::kStatsInstance);
    engine.reset();
    simulated::ResetServices();
  }
}

// What a host can count on that enables a sensor before a real-time thread delivers its samples.
TEST(CallCostTest, AfterAnEnableAndADrainOnlyAFirstSampleAllocatesAndOnlyItsAtom) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap and the locks";
  World world;
  world.StartEngine();
  SensorVela& engine = world.engine();
  const auto allocations_of_a_sample = [&] {
    world.time.WaitUntilAtRest();
    return CostOf([&] { engine.LogSensorLatency(kSensor, 0); }).calls.allocations;
  };
  engine.ReportHalSensorEnabled(kSensor, 1);
  EXPECT_EQ(allocations_of_a_sample(), 1) << "the atom";
  EXPECT_EQ(allocations_of_a_sample(), 0);
  engine.ReportHalSensorEnabled(kSensor, 1);
  EXPECT_EQ(allocations_of_a_sample(), 1) << "after another enable";
  // Any event finds a block of the queue.
  world.time.WaitUntilAtRest();
  EXPECT_EQ(CostOf([&] { engine.ReportFirmwareState(1, {}, 1); }).calls.allocations, 1);
}

TEST(CallCostTest, OfEachBuilderAndTheHistogram) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap and the locks";
  const auto expect_allocations = [](int count, const auto& record) {
    EXPECT_EQ(CostOf([&] { createVendorAtom(record); }), Cost({{count, 0}})) << record.kAtomId;
  };
  // A text too long for the string object costs one more allocation: it is copied only once.
  const std::string long_name(100, 'x');
  atoms::AllRecords::ForEach([&]<typename Record>() {
    expect_allocations(1, Record{});
    expect_allocations(2, Record{.reverse_domain_name = long_name});
  });
  expect_allocations(2, atoms::HalSensorStateChanged{.latency_histogram = {1, 2, 3, 4, 5}});
  expect_allocations(3, atoms::SensorMemoryServiceabilityStatsReported{
                            .bucket_allocation_count = {1}, .bucket_duration_ms = {1}});
  // The upload's lists are allocated once.
  const SensorVela::MemoryPressure memory = {};
  EXPECT_EQ(CostOf([&] { SensorVela::MemServiceabilityAtom(memory); }), Cost({{3, 0}}));

  const auto histogram = android::util::statslogapigen::StatsHistogram::createLinearBins(0, 1, 9);
  EXPECT_EQ(CostOf([&] {
              histogram->addValue(0.5F);
              histogram->clear();
            }),
            Cost{});
}

/// Counts what the reporter thread calls until the first report, and from one report to the next.
class CountingService : public aidl::android::frameworks::stats::BnStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& /*atom*/) override {
    const CallCounts entered = CallsOfThisThread();
    ++reports;
    if (!before_the_first) before_the_first = left_ = entered;
    between.allocations += entered.allocations - left_.allocations;
    between.locks += entered.locks - left_.locks;
    auto status = ndk::ScopedAStatus::ok();
    left_ = CallsOfThisThread();
    return status;
  }

  std::optional<CallCounts> before_the_first;
  CallCounts between;
  int reports = 0;

 private:
  CallCounts left_;
};

TEST(CallCostTest, ABatchOfAnyLengthIsTakenAndSentWithoutACopy) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap and the locks";
  const auto sent = [](int atoms) {
    simulated::VirtualTime time;
    const auto service = ndk::SharedRefBase::make<CountingService>();
    simulated::DeclareService(testkit::kStatsInstance);
    auto engine = testkit::MakeEngine(SupplierKind::kNone, nullptr);
    for (int i = 0; i < atoms; ++i) engine->ReportFirmwareState(1, {}, 1);
    time.WaitUntilSettled();  // The reporter thread waits for the service.
    simulated::RegisterService(testkit::kStatsInstance, service);
    time.WaitUntilAtRest();
    engine.reset();
    simulated::ResetServices();
    EXPECT_EQ(service->reports, atoms);
    EXPECT_EQ(service->between, CallCounts{});
    return service->before_the_first->allocations;
  };
  EXPECT_EQ(sent(1), sent(500));
}

}  // namespace
}  // namespace sensorvela::testing
