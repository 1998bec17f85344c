// Tests what the simulation's sequential model cannot: calls during a step of the reporter thread,
// and what the engine does to the host's objects.
#include <atomic>
#include <memory>
#include <string>
#include <utility>

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

TEST_F(CycleTest, ErrorCountsAreEmptiedBeforeTheUpload) {
  on_upload = [this] { ReportError(); };
  StartEngine();
  for (int i = 0; i < 11; ++i) ReportError();
  TakeHistory();
  time.RunTo(kCycle);
  EXPECT_THAT(TakeHistory(),
              ElementsAre("I Reporting HAL call [7] error [0] on sensor [0x00000001].",
                          "SensorHalErrorDetected{sensor_id_high=1, sensor_id_low=1, hal_call=7, "
                          "error_code=0}"));
}

using StopTest = EngineTest;

TEST_F(StopTest, DuringADrainSendsTheBatchAndDiscardsTheRest) {
  Gate gate;
  on_report = [&](const VendorAtom& atom) {
    if (atom.atomId == 1) gate.Pass();
  };
  UnregisterService();
  StartEngine();
  for (const int id : {1, 2}) engine().ReportVendorAtomAsync(Marker(id));
  TakeHistory();
  RegisterService();
  gate.AwaitArrival();
  engine().ReportVendorAtomAsync(Marker(3));
  DestroyEngine([&] { gate.Open(); });
  EXPECT_THAT(TakeHistory(), ElementsAre("I IStats service online.", "atom 1{}", "atom 2{}"));
}

TEST_F(StopTest, DuringAnUploadFinishesItAndThenDestroysTheSupplier) {
  Gate gate;
  Texts events;
  // Exists as long as the supplier, which owns the function.
  const auto on_destruction = [&](void*) { events.emplace_back("destroyed"); };
  std::shared_ptr<void> alive(nullptr, on_destruction);
  auto ask = [&, alive = std::move(alive)](DiagnosticsItem asked) {
    if (asked == DiagnosticsItem::kProcessor) gate.Pass();
    if (asked == DiagnosticsItem::kProxStats) events.emplace_back("uploaded");
    return testkit::Diagnostics{};
  };
  auto host_engine = testkit::MakeEngine(SupplierKind::kSecondGeneration, std::move(ask));
  TakeHistory();
  time.JumpTo(kCycle);
  gate.AwaitArrival();
  host_engine->ReportVendorAtomAsync(Marker(1));
  testkit::DestroyEngine(time, [&] { host_engine.reset(); }, [&] { gate.Open(); });
  EXPECT_THAT(events, ElementsAre("uploaded", "destroyed"));
  EXPECT_THAT(TakeHistory(), IsEmpty());
}

TEST_F(StopTest, WaitsForAServiceThatNobodyDeclares) {
  UndeclareService();
  UnregisterService();
  auto host_engine = testkit::MakeEngine(SupplierKind::kNone, nullptr);
  EXPECT_THAT(TakeHistory(), ElementsAre("E IStats service is not registered."));
  for (const int id : {1, 2, 3}) host_engine->ReportVendorAtomAsync(Marker(id));
  time.RunFor(24h);
  EXPECT_THAT(TakeHistory(), IsEmpty());
  EXPECT_EQ(SensorVelaTestPeer::AtomsTaken(*host_engine, time), 0);  // All three are queued.

  std::atomic<bool> destroyed = false;
  testkit::DestroyEngine(
      time,
      [&] {
        host_engine.reset();
        destroyed = true;
      },
      [&] {
        EXPECT_FALSE(destroyed);
        RegisterService();
      });
  EXPECT_TRUE(destroyed);
}

}  // namespace
}  // namespace sensorvela::testing
