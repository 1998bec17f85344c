#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/host/service_manager.h"
#include "platform/host/virtual_time.h"
#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

using Instants = std::vector<std::chrono::nanoseconds>;
using Texts = std::vector<std::string>;
constexpr auto kCycle = 6h;

const std::string kNotDeclared = "E IStats service is not registered.";
const std::string kWaiting = "I Waiting for IStats service to come up.";
const std::string kOnline = "I IStats service online.";
const std::string kNotObtained = "E Failed to get IStats service.";
const std::string kDropped = "E Failed to get IStats service. Atoms are dropped.";

TEST_F(EngineTest, FindsARegisteredService) {
  Start();
  time_.WaitUntilAtRest();
  EXPECT_EQ(Lines(), (Texts{kWaiting, kOnline}));
}

TEST_F(EngineTest, AsksForAnUndeclaredServiceAtEachDrainAllTheSame) {
  host::UndeclareService(kInstance);
  Start();
  engine_->ReportVendorAtomAsync(Marker(1));
  EXPECT_EQ(Delivered(), Texts{"1"});
  EXPECT_EQ(Lines(), Texts{kNotDeclared});
}

TEST_F(EngineTest, DropsABatchWithOneLineWhileThereIsNoService) {
  host::ResetServices();
  Start();
  time_.WaitUntilAtRest();
  EXPECT_EQ(Lines(), (Texts{kNotDeclared, kDropped}));  // The batch was empty.

  engine_->ReportVendorAtomAsync(Marker(1));
  time_.WaitUntilAtRest();
  EXPECT_EQ(Lines(), (Texts{kNotDeclared, kDropped, kDropped}));

  host::RegisterService(kInstance, stats_);
  engine_->ReportVendorAtomAsync(Marker(2));
  EXPECT_EQ(Delivered(), Texts{"2"});
}

TEST_F(EngineTest, GoesOnWhenTheWaitForTheServiceYieldsNone) {
  host::UnregisterService(kInstance);
  Start();
  time_.WaitUntilSettled();
  EXPECT_EQ(Lines(), Texts{kWaiting});
  for (const int id : {1, 2}) engine_->ReportVendorAtomAsync(Marker(id));

  host::ReleaseServiceWaits(kInstance);  // The wait at the start.
  time_.WaitUntilSettled();
  EXPECT_EQ(Lines(), (Texts{kWaiting, kNotObtained}));

  host::ReleaseServiceWaits(kInstance);  // The first drain's, with both atoms in its batch.
  time_.WaitUntilAtRest();
  EXPECT_EQ(Lines(), (Texts{kWaiting, kNotObtained, kDropped}));
  EXPECT_EQ(Delivered(), Texts{});
}

TEST_F(EngineTest, SendsInOrderWhatWasQueuedBeforeTheServiceCameUp) {
  host::UnregisterService(kInstance);
  Start();
  for (const int id : {3, 1, 2}) engine_->ReportVendorAtomAsync(Marker(id));
  time_.WaitUntilSettled();
  host::RegisterService(kInstance, stats_);
  EXPECT_EQ(Delivered(), (Texts{"3", "1", "2"}));
  EXPECT_EQ(Lines(), (Texts{kWaiting, kOnline}));
}

TEST_F(EngineTest, LogsAReportThatFailsAndSendsTheOthers) {
  stats_->answer = [](const VendorAtom& atom) {
    if (atom.atomId == 2) return ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
    if (atom.atomId == -3) return ndk::ScopedAStatus();  // No status at all.
    return ndk::ScopedAStatus::ok();
  };
  Start();
  for (const int id : {1, 2, -3, 4}) engine_->ReportVendorAtomAsync(Marker(id));
  EXPECT_EQ(Delivered(), (Texts{"1", "2", "-3", "4"}));
  EXPECT_EQ(Lines(), (Texts{kWaiting, kOnline, "E Failed to report atom [id = 2].",
                            "E Failed to report atom [id = -3]."}));
}

TEST_F(EngineTest, FindsARestartedServiceAndKeepsNoHoldOnTheOldOne) {
  Start();
  engine_->ReportVendorAtomAsync(Marker(1));
  EXPECT_EQ(Delivered(), Texts{"1"});

  const auto restarted = std::make_shared<RecordingStats>();
  host::RegisterService(kInstance, restarted);
  EXPECT_EQ(stats_.use_count(), 1);
  engine_->ReportVendorAtomAsync(Marker(2));
  EXPECT_EQ(Delivered(), Texts{});
  EXPECT_EQ(restarted->shown(), Texts{"2"});
}

TEST_F(EngineTest, EnginesInOneProcessAreIndependent) {
  Start();
  SensorVela other{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
  for (int i = 0; i < 11; ++i) engine_->LogSensorHalError({1, 1}, SensorVela::HalCall{7}, 0);
  other.LogSensorHalError({2, 2}, SensorVela::HalCall{7}, 0);
  EXPECT_EQ(Delivered().size(), 11U);
}

TEST_F(EngineTest, TakesTheSupplierOver) {
  class FirstGeneration : public SensorVela::SystemDiagnosticsSupplier {
    SensorVela::ProcessorDiag GetProcessorDiagnostics() override { return {}; }
    SensorVela::QueueStress GetQueueStressType1() override { return {}; }
    SensorVela::QueueStress GetQueueStressType2() override { return {}; }
    SensorVela::QueueStress GetQueueStressType3() override { return {}; }
  };
  std::unique_ptr<SensorVela::SystemDiagnosticsSupplier> first =
      std::make_unique<FirstGeneration>();
  std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2> second =
      std::make_unique<ScriptedSupplier>();
  const SensorVela with_first(std::move(first));
  const SensorVela with_second(std::move(second));
  EXPECT_EQ(first, nullptr);
  EXPECT_EQ(second, nullptr);
}

// Each tells when cycles ended; the supplier is asked once at each end.
class CycleTest : public EngineTest {
 protected:
  void StartRecordingUploads() {
    Start([this] { uploads_.push_back(time_.Now()); });
  }
  Instants uploads_;
};

TEST_F(CycleTest, EndsEverySixHoursOfIdleness) {
  StartRecordingUploads();
  time_.RunTo(kCycle - 1ns);
  EXPECT_EQ(uploads_, Instants{});
  time_.RunTo(4 * kCycle);
  EXPECT_EQ(uploads_, (Instants{kCycle, 2 * kCycle, 3 * kCycle, 4 * kCycle}));
}

TEST_F(CycleTest, ItsDeadlineIsMovedByNoDrainAndNoNotification) {
  StartRecordingUploads();
  for (const auto at : {1h, 3h, 5h}) {
    time_.RunTo(at);
    engine_->ReportVendorAtomAsync(Marker(1));
  }
  time_.RunTo(2 * kCycle);
  EXPECT_EQ(uploads_, (Instants{kCycle, 2 * kCycle}));
}

TEST_F(CycleTest, TheFirstIsMeasuredFromTheStartNotFromTheService) {
  host::UnregisterService(kInstance);
  StartRecordingUploads();
  time_.RunTo(5h);
  host::RegisterService(kInstance, stats_);
  time_.RunTo(kCycle);
  EXPECT_EQ(uploads_, Instants{kCycle});

  host::UnregisterService(kInstance);
  engine_->ReportVendorAtomAsync(Marker(1));
  time_.RunTo(13h);  // The drain is blocked while the deadline passes.
  host::RegisterService(kInstance, stats_);
  time_.RunTo(19h);
  EXPECT_EQ(uploads_, (Instants{kCycle, 13h, 19h}));
}

TEST_F(CycleTest, EndsWhenANotificationComesAfterTheDeadline) {
  StartRecordingUploads();
  time_.WaitUntilAtRest();
  time_.SlipTo(kCycle + 1ns);
  engine_->ReportVendorAtomAsync(Marker(1));
  EXPECT_EQ(Delivered(), Texts{"1"});
  EXPECT_EQ(uploads_, Instants{kCycle + 1ns});
}

TEST_F(CycleTest, IsHeldBackByAStreamUntilTheQueueIsFoundEmpty) {
  StartRecordingUploads();
  time_.WaitUntilAtRest();
  std::vector<std::size_t> uploads_seen;
  stats_->answer = [&](const VendorAtom& atom) {
    uploads_seen.push_back(uploads_.size());
    if (atom.atomId == 2) time_.SlipTo(kCycle + 1h);
    if (atom.atomId < 5) engine_->ReportVendorAtomAsync(Marker(atom.atomId + 1));
    return ndk::ScopedAStatus::ok();
  };
  engine_->ReportVendorAtomAsync(Marker(1));
  time_.WaitUntilAtRest();
  EXPECT_EQ(uploads_seen, (std::vector<std::size_t>{0, 0, 0, 0, 0}));
  EXPECT_EQ(uploads_, Instants{kCycle + 1h});
}

TEST_F(CycleTest, TheTimeThatAnUploadTakesBelongsToTheNextCycle) {
  Start([this] {
    uploads_.push_back(time_.Now());
    time_.SlipTo(time_.Now() + 1h);
  });
  time_.RunTo(19h);
  EXPECT_EQ(uploads_, (Instants{6h, 12h, 18h}));
}

TEST_F(CycleTest, ErrorCountsAreEmptiedBeforeTheUpload) {
  const auto report = [this] { engine_->LogSensorHalError({1, 1}, SensorVela::HalCall{7}, 0); };
  Start(report);
  for (int i = 0; i < 12; ++i) report();
  EXPECT_EQ(Delivered().size(), 10U);
  time_.RunTo(kCycle);
  EXPECT_EQ(Delivered().size(), 1U);
}

class StopTest : public EngineTest {};

TEST_F(StopTest, DuringASleepNeitherDrainsNorUploads) {
  int uploads = 0;
  int destructions = 0;
  Start([&] { ++uploads; }, [&] { ++destructions; });
  time_.RunTo(kCycle - 1ns);
  engine_.reset();
  EXPECT_EQ(uploads, 0);
  EXPECT_EQ(destructions, 1);
}

TEST_F(StopTest, WakingASleepPastItsDeadlineEndsThatCycleOnce) {
  int uploads = 0;
  Start([&] { ++uploads; });
  time_.WaitUntilAtRest();
  time_.SlipTo(kCycle);
  engine_.reset();
  EXPECT_EQ(uploads, 1);
}

TEST_F(StopTest, DuringTheWaitForTheServiceSendsNothing) {
  for (const bool comes_up : {false, true}) {
    host::UnregisterService(kInstance);
    Start();
    engine_->ReportVendorAtomAsync(Marker(1));
    time_.WaitUntilSettled();
    std::thread destruction = BeginStop();
    comes_up ? host::RegisterService(kInstance, stats_) : host::ReleaseServiceWaits(kInstance);
    destruction.join();
    EXPECT_EQ(stats_->shown(), Texts{});
  }
  EXPECT_EQ(Lines(), (Texts{kWaiting, kNotObtained, kWaiting, kOnline}));
}

TEST_F(StopTest, DuringADrainSendsTheBatchAndDiscardsTheRest) {
  Gate gate;
  stats_->answer = [&](const VendorAtom& atom) {
    if (atom.atomId == 1) gate.Pass();
    return ndk::ScopedAStatus::ok();
  };
  host::UnregisterService(kInstance);
  Start();
  for (const int id : {1, 2}) engine_->ReportVendorAtomAsync(Marker(id));
  host::RegisterService(kInstance, stats_);
  gate.AwaitArrival();
  engine_->ReportVendorAtomAsync(Marker(3));
  std::thread destruction = BeginStop();
  gate.Open();
  destruction.join();
  EXPECT_EQ(stats_->shown(), (Texts{"1", "2"}));
}

TEST_F(StopTest, DuringAnUploadFinishesItAndThenDestroysTheSupplier) {
  Gate gate;
  Texts events;
  Start([&] { gate.Pass(), events.push_back("upload"); }, [&] { events.push_back("destroyed"); });
  time_.WaitUntilAtRest();
  time_.JumpTo(kCycle);
  gate.AwaitArrival();
  engine_->ReportVendorAtomAsync(Marker(1));
  std::thread destruction = BeginStop();
  gate.Open();
  destruction.join();
  EXPECT_EQ(events, (Texts{"upload", "destroyed"}));
  EXPECT_EQ(stats_->shown(), Texts{});
}

}  // namespace
}  // namespace sensorvela::testing
