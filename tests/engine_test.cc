// What the simulation's sequential model cannot say: what happens while the reporter thread is in
// the middle of a step, and what the engine does to the host's objects.
#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

constexpr auto kCycle = 6h;

class EngineTest : public ::testing::Test, public World {
 protected:
  EngineTest() {
    simulated::DeclareService(kInstance);
    Register();
  }
};

TEST_F(EngineTest, KeepsNoHoldOnTheService) {
  class SilentStats : public aidl::android::frameworks::stats::IStats {
    ndk::ScopedAStatus reportVendorAtom(const VendorAtom&) override { return ndk::ScopedAStatus(); }
  };
  const auto service = std::make_shared<SilentStats>();
  simulated::RegisterService(kInstance, service);
  Start();
  time.WaitUntilAtRest();
  simulated::UnregisterService(kInstance);
  EXPECT_EQ(service.use_count(), 1);
}

TEST_F(EngineTest, EnginesInOneProcessAreIndependent) {
  Start();
  SensorVela other{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
  Seen();
  for (int i = 0; i < 11; ++i) engine->LogSensorHalError({1, 1}, SensorVela::HalCall{7}, 0);
  Seen();
  other.LogSensorHalError({2, 2}, SensorVela::HalCall{7}, 0);
  EXPECT_EQ(Seen(), (Texts{"I Reporting HAL call [7] error [0] on sensor [0x00000002].",
                           "100024 i2 i2 i7 i0"}));
}

using CycleTest = EngineTest;

TEST_F(CycleTest, IsHeldBackByAStreamUntilTheQueueIsFoundEmpty) {
  int uploads = 0;
  int uploads_in_the_stream = 0;
  on_upload = [&] { ++uploads; };
  answer = [&](const VendorAtom& atom) {
    uploads_in_the_stream += uploads;
    if (atom.atomId == 2) time.SlipTo(kCycle + 1h);
    if (atom.atomId < 5) engine->ReportVendorAtomAsync(Marker(atom.atomId + 1));
    return ndk::ScopedAStatus::ok();
  };
  Start();
  time.WaitUntilAtRest();
  engine->ReportVendorAtomAsync(Marker(1));
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
  Start();
  time.RunTo(19h);
  EXPECT_EQ(uploads, (std::vector<std::chrono::nanoseconds>{6h, 12h, 18h}));
}

TEST_F(CycleTest, ErrorCountsAreEmptiedBeforeTheUpload) {
  const auto report = [this] { engine->LogSensorHalError({1, 1}, SensorVela::HalCall{7}, 0); };
  on_upload = report;
  Start();
  for (int i = 0; i < 11; ++i) report();
  Seen();
  time.RunTo(kCycle);
  EXPECT_EQ(Seen(), (Texts{"I Reporting HAL call [7] error [0] on sensor [0x00000001].",
                           "100024 i1 i1 i7 i0"}));
}

using StopTest = EngineTest;

TEST_F(StopTest, DuringADrainSendsTheBatchAndDiscardsTheRest) {
  Gate gate;
  answer = [&](const VendorAtom& atom) {
    if (atom.atomId == 1) gate.Pass();
    return ndk::ScopedAStatus::ok();
  };
  simulated::UnregisterService(kInstance);
  Start();
  for (const int id : {1, 2}) engine->ReportVendorAtomAsync(Marker(id));
  Seen();
  Register();
  gate.AwaitArrival();
  engine->ReportVendorAtomAsync(Marker(3));
  std::thread destruction = BeginStop();
  gate.Open();
  destruction.join();
  EXPECT_EQ(Seen(), (Texts{"I IStats service online.", "1", "2"}));
}

TEST_F(StopTest, DuringAnUploadFinishesItAndThenDestroysTheSupplier) {
  Gate gate;
  Texts events;
  on_upload = [&] {
    gate.Pass();
    events.emplace_back("upload");
  };
  on_supplier_destroyed = [&] { events.emplace_back("destroyed"); };
  Start();
  Seen();
  time.JumpTo(kCycle);
  gate.AwaitArrival();
  engine->ReportVendorAtomAsync(Marker(1));
  std::thread destruction = BeginStop();
  gate.Open();
  destruction.join();
  EXPECT_EQ(events, (Texts{"upload", "destroyed"}));
  EXPECT_EQ(Seen(), Texts{});
}

}  // namespace
}  // namespace sensorvela::testing
