#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "tests/library/call_counts.h"
#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

TEST(HeapTest, AYearOfCyclesLeavesTheHeapAsItWas) {
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
  // The queue keeps the memory of a small batch and frees that of a large one. Which came last is
  // left to the threads.
  constexpr std::int64_t kKeptBytes = 12'000;
  static_assert(kKeptBytes / kCycles < 16, "a leak of one allocation a cycle is more");
  EXPECT_LE(std::abs(HeapBytesInUse() - after_the_second), kKeptBytes);
}

}  // namespace
}  // namespace sensorvela::testing
