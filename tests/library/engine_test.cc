// Tests what the simulation's sequential model cannot: calls during a step of the reporter thread,
// and what the engine does to the host's objects.
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

constexpr auto kCycle = 6h;

class EngineTest : public ::testing::Test, public World {
 protected:
  EngineTest() {
    on_ask = [this](DiagnosticsItem asked) {
      if (asked == DiagnosticsItem::kProcessor && on_upload) on_upload();
    };
  }

  void ReportError() { engine().LogSensorHalError({1, 1}, SensorVela::HalCall{7}, 0); }

  std::function<void()> on_upload;
};

TEST_F(EngineTest, TakesTheSupplierOver) {
  auto first = testkit::MakeFirstGenerationSupplier(testkit::Diagnostics{});
  auto second = testkit::MakeSecondGenerationSupplier(testkit::Diagnostics{});
  const SensorVela with_first(std::move(first));
  const SensorVela with_second(std::move(second));
  EXPECT_EQ(first, nullptr);   // NOLINT(bugprone-use-after-move): a guarantee.
  EXPECT_EQ(second, nullptr);  // NOLINT(bugprone-use-after-move)
}

TEST_F(EngineTest, KeepsNoHoldOnTheService) {
  const auto other = ndk::SharedRefBase::make<testkit::StatsService>();
  simulated::RegisterService(testkit::kStatsInstance, other);
  StartEngine();
  time.WaitUntilAtRest();
  UnregisterService();
  EXPECT_EQ(other.use_count(), 1);
}

TEST_F(EngineTest, EnginesInOneProcessAreIndependent) {
  StartEngine();
  SensorVela other{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
  for (int i = 0; i < 11; ++i) ReportError();
  TakeHistory();
  other.LogSensorHalError({2, 2}, SensorVela::HalCall{7}, 0);
  EXPECT_THAT(TakeHistory(),
              ElementsAre("I Reporting HAL call [7] error [0] on sensor [0x00000002].",
                          "SensorHalErrorDetected{sensor_id_high=2, sensor_id_low=2, hal_call=7, "
                          "error_code=0}"));
}

TEST_F(EngineTest, LosesNoAtomOfThreadsThatCallAtOnce) {
  constexpr std::uint32_t kThreads = 4;
  constexpr int kTimes = 500;
  StartEngine();
  const auto call = [this](std::uint32_t thread) {
    for (int i = 0; i < kTimes; ++i) {
      engine().ReportHalSensorEnabled({thread, 0}, 1);
      engine().LogSensorLatency({thread, 0}, 0);
      ReportError();
      engine().ReportHalSensorDisabled({thread, 0});
    }
  };
  std::vector<std::thread> threads;
  for (std::uint32_t thread = 0; thread < kThreads; ++thread) threads.emplace_back(call, thread);
  for (std::thread& thread : threads) thread.join();
  time.WaitUntilAtRest();
  // Enables, first samples and disables, and errors up to the cap.
  EXPECT_EQ(TakeAtoms().size(), kThreads * kTimes * 3 + 10);
}

using CycleTest = EngineTest;

TEST_F(CycleTest, IsHeldBackByAStreamUntilTheQueueIsFoundEmpty) {
  int uploads = 0;
  int uploads_in_the_stream = 0;
  on_upload = [&] { ++uploads; };
  on_report = [&](const VendorAtom& atom) {
    uploads_in_the_stream += uploads;
    if (atom.atomId == 2) time.SlipTo(kCycle + 1h);
    if (atom.atomId < 5) engine().ReportVendorAtomAsync(Marker(atom.atomId + 1));
  };
  StartEngine();
  time.WaitUntilAtRest();
  engine().ReportVendorAtomAsync(Marker(1));
  time.WaitUntilAtRest();
  EXPECT_EQ(uploads_in_the_stream, 0);
  EXPECT_EQ(uploads, 1);
}

TEST_F(CycleTest, TheTimeThatAnUploadTakesBelongsToTheNextCycle) {
  std::vector<std::chrono::nanoseconds> uploads;
  on_upload = [&] {
    uploads.push_back(time.Now());
    time.SlipTo(time.Now() + 1h);
  };
  StartEngine();
  time.RunTo(19h);
  EXPECT_THAT(uploads, ElementsAre(6h, 12h, 18h));
}

}  // namespace
}  // namespace sensorvela::testing
