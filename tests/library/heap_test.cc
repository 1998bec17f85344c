// Growth that stays reachable, which no leak checker sees.
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
  // A heap rounds a block's size up by what happens to be free behind it.
  constexpr std::int64_t kRounding = 12'000;
  static_assert(kRounding / kCycles < 16, "a leak of one block a cycle is more");
  EXPECT_LE(std::abs(HeapBytesInUse() - after_the_second), kRounding);
}

}  // namespace
}  // namespace sensorvela::testing
