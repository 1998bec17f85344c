// A separate program, because the failed construction of an engine does not free its fields: the
// library is built without exceptions.
#include <memory>
#include <system_error>

#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

TEST(ThreadStartTest, ARefusalReachesTheHostAsASystemErrorAndLeavesVirtualTimeAsItWas) {
  World world;
  world.StartEngine();
  {
    const RefusedThreads refused;
    try {
      const SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
      FAIL() << "the thread started";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
#ifdef _LIBCPP_VERSION  // Other libraries have another text.
      EXPECT_THAT(error.what(), ::testing::StartsWith("thread constructor failed"));
#endif
    }
  }
  world.time.RunFor(6h);
  world.engine().ReportFirmwareState(1, {}, 1);
  EXPECT_EQ(world.TakeAtoms().back().atomId, 100244);
}

}  // namespace
}  // namespace sensorvela::testing
