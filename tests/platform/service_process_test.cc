// The process of a stats service, as a host sees it.
#include <sensorvela/platform/simulated/service_process.h>

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/stats_service.h>
#include <sensorvela/testkit/world.h>

#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

using aidl::android::frameworks::stats::Annotation;
using aidl::android::frameworks::stats::AnnotationId;
using aidl::android::frameworks::stats::AnnotationSet;
using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtomValue;
using simulated::ServiceProcess;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::SizeIs;
using testkit::kStatsInstance;

/// A process without an engine.
class ServiceProcessTest : public ::testing::Test {
 protected:
  ServiceProcessTest() { simulated::RegisterService(kStatsInstance, process); }
  ~ServiceProcessTest() override { simulated::ResetServices(); }

  /// The service as a host gets it now; null if its lookup finds none.
  static std::shared_ptr<IStats> LookUp() {
    return IStats::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kStatsInstance)));
  }

  simulated::VirtualTime time;
  const std::shared_ptr<testkit::StatsService> service =
      ndk::SharedRefBase::make<testkit::StatsService>();
  const std::shared_ptr<ServiceProcess> process = std::make_shared<ServiceProcess>(service);
};

TEST_F(ServiceProcessTest, AReportTakesWhatItsParcelTakes) {
  using Value = VendorAtomValue;
  const auto atom = [](std::vector<Value> values) {
    VendorAtom made;
    made.values = std::move(values);
    return made;
  };
  VendorAtom with_domain = atom({});
  with_domain.reverseDomainName = "abc";
  VendorAtom annotated = atom({});
  const Annotation annotation = {AnnotationId::IS_UID, true};
  annotated.atomAnnotations = {{annotation, std::nullopt}};
  annotated.valuesAnnotations = {{AnnotationSet{0, {annotation}}}};
  const std::vector<std::optional<std::string>> texts = {"ab", std::nullopt};
  const std::pair<VendorAtom, std::size_t> kCases[] = {
      {atom({}), 112},
      {atom({1, 2, 3, std::int64_t{4}}), 168},
      {atom({0.5F, true}), 136},
      {atom({"", "a", "ab"}), 112 + 16 + 16 + 20},
      {atom({"\xC3\xA4\xF0\x9F\x98\x80"}), 112 + 20},  // Three units of UTF-16.
      {atom({Value::make<Value::repeatedIntValue>(std::nullopt)}), 128},
      {atom({std::vector<std::int32_t>{1, 2, 3}}), 136},
      {atom({std::vector<std::int64_t>{1, 2, 3}}), 152},
      {atom({std::vector<float>{1, 2, 3}, std::vector<bool>{true}}), 152},
      {atom({std::vector<std::uint8_t>{1, 2, 3, 4, 5}}), 136},
      {atom({texts}), 112 + 8 + 4 + 12 + 4},
      {with_domain, 112 + 4},
      {annotated, 112 + (24 + 4) + (12 + 4 + 24)}};
  const std::shared_ptr<IStats> stats = LookUp();
  process->Stop();
  for (const auto& [each, bytes] : kCases) {
    const std::size_t before = process->BytesInBuffer();
    stats->reportVendorAtom(each);
    EXPECT_EQ(process->BytesInBuffer() - before, (bytes + 7) / 8 * 8) << each.toString();
  }
}

TEST_F(ServiceProcessTest, ItsBufferFillsToTheLastByteAndIsEmptiedByTheProcess) {
  const std::shared_ptr<IStats> stats = LookUp();
  process->Stop();
  VendorAtom atom;  // 112 bytes.
  const std::size_t fit = ServiceProcess::kBufferBytes / 112;
  for (std::size_t i = 0; i < fit; ++i) EXPECT_TRUE(stats->reportVendorAtom(atom).isOk());
  EXPECT_EQ(stats->reportVendorAtom(atom).getStatus(), STATUS_FAILED_TRANSACTION);
  process->GoOn();
  EXPECT_THAT(service->TakeAtoms(), SizeIs(fit));
  EXPECT_EQ(process->BytesInBuffer(), 0U);
  atom.values = {std::string(250'000, 'x')};
  EXPECT_EQ(stats->reportVendorAtom(atom).getStatus(), STATUS_FAILED_TRANSACTION);
}

TEST_F(ServiceProcessTest, ItTakesItsTimeForEachAtomAndStandsStillWhileItIsStopped) {
  const std::shared_ptr<IStats> stats = LookUp();
  process->SetTimePerAtom(milliseconds(10));
  for (int i = 0; i < 4; ++i) stats->reportVendorAtom(Marker(i));
  const auto taken_after = [&](milliseconds duration) {
    time.RunFor(duration);
    return service->TakeAtoms().size();
  };
  EXPECT_EQ(taken_after(milliseconds(9)), 0U);
  EXPECT_EQ(taken_after(milliseconds(1)), 1U);
  EXPECT_EQ(taken_after(milliseconds(8)), 0U);
  process->Stop();
  EXPECT_EQ(taken_after(milliseconds(100)), 0U);
  process->GoOn();
  EXPECT_EQ(taken_after(milliseconds(1)), 0U);
  EXPECT_EQ(taken_after(milliseconds(1)), 1U);
  time.Suspend(milliseconds(50));
  EXPECT_EQ(taken_after(milliseconds(9)), 0U);
  EXPECT_EQ(taken_after(milliseconds(11)), 2U);
}

TEST_F(ServiceProcessTest, ADeadOneIsFoundOnceMoreAndNotAnswering) {
  std::vector<int> deaths;
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(
      [](void* cookie) { static_cast<std::vector<int>*>(cookie)->push_back(1); }));
  ndk::SpAIBinder binder(AServiceManager_checkService(kStatsInstance));
  EXPECT_TRUE(AIBinder_isRemote(binder.get()));
  EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &deaths), STATUS_OK);
  EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), nullptr), STATUS_OK);
  EXPECT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), nullptr), STATUS_OK);
  EXPECT_EQ(AIBinder_unlinkToDeath(binder.get(), recipient.get(), nullptr), STATUS_NAME_NOT_FOUND);
  process->Die();
  EXPECT_THAT(deaths, ElementsAre(1));
  EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_DEAD_OBJECT);
  EXPECT_EQ(AIBinder_linkToDeath(binder.get(), recipient.get(), &deaths), STATUS_DEAD_OBJECT);
  binder.set(AServiceManager_checkService(kStatsInstance));
  EXPECT_NE(binder, nullptr);
  EXPECT_EQ(IStats::fromBinder(binder), nullptr);
  EXPECT_EQ(ndk::SpAIBinder(AServiceManager_checkService(kStatsInstance)), nullptr);
}

// The descriptor is known, and nobody asks the process.
TEST_F(ServiceProcessTest, WhoHasAReferenceFindsItStoppedOrDead) {
  const std::shared_ptr<IStats> own = LookUp();
  process->Stop();
  EXPECT_EQ(LookUp(), own);
  process->Die();
  const std::shared_ptr<IStats> dead = LookUp();
  ASSERT_EQ(dead, own);
  EXPECT_EQ(dead->reportVendorAtom(VendorAtom()).getStatus(), STATUS_DEAD_OBJECT);
}

/// With an engine, in the kit's world.
class ServiceProcessWorldTest : public ::testing::Test {
 protected:
  World world;
};

TEST_F(ServiceProcessWorldTest, AStoppedProcessHoldsALookupAndNoCaller) {
  world.RegisterServiceProcess();
  SensorVela& engine = world.StartEngine(SupplierKind::kNone);
  world.time.WaitUntilAtRest();
  world.StopServiceProcess();
  engine.ReportVendorAtomAsync(Marker(1));
  engine.ReportVendorAtomAsync(Marker(2));
  EXPECT_EQ(world.AtomsInBuffer(), 0U);
  world.ContinueServiceProcess();
  EXPECT_THAT(world.TakeAtoms(), ElementsAre(Marker(1), Marker(2)));
}

TEST_F(ServiceProcessWorldTest, WhatItsBufferHasWhenItDiesIsLostAndTheNextBatchIsDropped) {
  world.RegisterServiceProcess();
  world.SetTimePerAtom(std::chrono::seconds(1));
  SensorVela& engine = world.StartEngine(SupplierKind::kNone);
  world.time.WaitUntilAtRest();
  world.TakeHistory();
  engine.ReportVendorAtomAsync(Marker(1));
  EXPECT_EQ(world.AtomsInBuffer(), 1U);
  world.KillServiceProcess();
  engine.ReportVendorAtomAsync(Marker(2));
  world.time.WaitUntilSettled();
  engine.ReportVendorAtomAsync(Marker(3));
  EXPECT_THAT(world.TakeHistory(),
              ElementsAre("lost " + AtomText(Marker(1)),
                          "E Failed to get IStats service. Atoms are dropped."));
  world.RegisterServiceProcess();
  world.time.RunFor(std::chrono::seconds(1));
  EXPECT_THAT(world.TakeHistory(), ElementsAre(AtomText(Marker(3))));
}

TEST_F(ServiceProcessWorldTest, TheRestOfABatchIsTriedAgainstADeadProcess) {
  world.UnregisterService();
  SensorVela& engine = world.StartEngine(SupplierKind::kNone);
  for (int i = 1; i <= 5; ++i) engine.ReportVendorAtomAsync(Marker(i));
  std::shared_ptr<ServiceProcess> process;
  int reports = 0;
  int lost = 0;
  const simulated::ProcessObserver observer = {.on_report =
                                                   [&](const VendorAtom&, binder_status_t) {
                                                     if (++reports == 3) process->Die();
                                                   },
                                               .on_lost = [&](const VendorAtom&) { ++lost; }};
  process = std::make_shared<ServiceProcess>(world.service, observer);
  process->SetTimePerAtom(std::chrono::seconds(1));
  world.TakeHistory();
  simulated::RegisterService(kStatsInstance, process);
  EXPECT_THAT(world.TakeHistory(),
              ElementsAre("I IStats service online.", "E Failed to report atom [id = 4].",
                          "E Failed to report atom [id = 5]."));
  EXPECT_EQ(lost, 3);
  world.DestroyEngine();
}

TEST_F(ServiceProcessWorldTest, ARefusalLooksLikeAMissingDeclarationAndEndsNoWait) {
  world.RefuseService();
  world.StartEngine(SupplierKind::kNone);
  EXPECT_THAT(world.TakeHistory(),
              ElementsAre("E IStats service is not registered.",
                          "E Failed to get IStats service. Atoms are dropped."));
  world.AllowService();
  world.UnregisterService();
  world.engine().ReportVendorAtomAsync(Marker(1));
  world.time.WaitUntilSettled();
  world.RefuseService();
  EXPECT_THAT(world.TakeHistory(), SizeIs(0));
  world.RegisterService();
  EXPECT_THAT(world.TakeHistory(), ElementsAre(AtomText(Marker(1))));
}

}  // namespace
}  // namespace sensorvela::testing
