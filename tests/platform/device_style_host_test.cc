// Runs the host that is written as for a device, on the simulated platform.
#include "tests/platform/device_style_host.h"

#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>

namespace device_style_host {
namespace {

using aidl::android::frameworks::stats::IStats;
using ndk::SpAIBinder;

/// Registered under the name that the engine looks up; unregistered at the end.
class DeviceStyleHostTest : public testing::Test {
 protected:
  DeviceStyleHostTest() {
    sensorvela::simulated::DeclareService(name);
    EXPECT_EQ(AServiceManager_addService(service->asBinder().get(), name.c_str()), EX_NONE);
  }
  ~DeviceStyleHostTest() override {
    sensorvela::simulated::ResetServices();
    EXPECT_EQ(service.use_count(), 1) << "somebody has kept a reference";
  }

  const std::string name = std::string(IStats::descriptor) + "/default";
  const std::shared_ptr<StatsService> service = ndk::SharedRefBase::make<StatsService>();
};

TEST_F(DeviceStyleHostTest, ItsAtomsAndDiagnosticsArriveUnchanged) {
  const auto queue = [](int type) {
    return SensorVela::SystemQueueStressAtom(SensorVela::QueueType{type}, kQueues[type - 1]);
  };
  const struct {
    const char* supplier;
    std::function<std::unique_ptr<SensorVela>()> start;
    std::vector<VendorAtom> uploaded;
  } kCases[] = {{"none",
                 [] {
                   return std::make_unique<SensorVela>(
                       std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2>());
                 },
                 {}},
                {"first generation",
                 [] { return std::make_unique<SensorVela>(std::make_unique<FirstGeneration>()); },
                 {SensorVela::ProcessorDiagnosticsAtom(kProcessor), queue(1), queue(2), queue(3)}},
                {"second generation",
                 [] { return std::make_unique<SensorVela>(std::make_unique<SecondGeneration>()); },
                 {queue(2), SensorVela::IpcErrorRateAtom({1}), SensorVela::IpcErrorRateAtom({2}),
                  SensorVela::MemServiceabilityAtom(kServiceability),
                  SensorVela::MemoryPressureAtom(kPressure), SensorVela::SensorUsageAtom({3}),
                  SensorVela::GatingContextAtom({4}), SensorVela::DramExceptionAtom({5}),
                  SensorVela::AadProxStatsAtom({6})}}};
  for (const auto& each : kCases) {
    SCOPED_TRACE(each.supplier);
    sensorvela::simulated::VirtualTime time;
    const std::unique_ptr<SensorVela> engine = each.start();
    const std::vector<VendorAtom> atoms = AnnotatedAtoms();
    for (const VendorAtom& atom : atoms) engine->ReportVendorAtomAsync(atom);
    time.WaitUntilAtRest();
    EXPECT_EQ(service->TakeAtoms(), atoms);
    time.RunFor(std::chrono::hours(6));
    EXPECT_EQ(service->TakeAtoms(), each.uploaded);
  }
}

TEST_F(DeviceStyleHostTest, AServiceHasOneBinder) {
  const SpAIBinder binder = service->asBinder();
  EXPECT_EQ(service->asBinder(), binder);
  EXPECT_EQ(SpAIBinder(AServiceManager_waitForService(name.c_str())), binder);
  EXPECT_EQ(SpAIBinder(AServiceManager_checkService(name.c_str())), binder);
  EXPECT_EQ(IStats::fromBinder(binder), service);
  EXPECT_EQ(SpAIBinder(AServiceManager_checkService("absent")), nullptr);
}

TEST_F(DeviceStyleHostTest, ARegistrationIsRefusedWhatIsNotDeclaredAndToldToWhoAsks) {
  std::vector<std::string> told;
  const auto tell = [](const char* instance, AIBinder*, void* cookie) {
    static_cast<std::vector<std::string>*>(cookie)->emplace_back(instance);
  };
  auto* const registration =
      AServiceManager_registerForServiceNotifications(name.c_str(), tell, &told);
  EXPECT_EQ(told.size(), 1U) << "it is registered already";
  const SpAIBinder binder = service->asBinder();
  EXPECT_EQ(AServiceManager_addService(binder.get(), name.c_str()), EX_NONE);
  EXPECT_EQ(AServiceManager_addService(binder.get(), "undeclared"), EX_ILLEGAL_ARGUMENT);
  EXPECT_EQ(SpAIBinder(AServiceManager_checkService("undeclared")), nullptr);
  AServiceManager_NotificationRegistration_delete(registration);
  EXPECT_EQ(AServiceManager_addService(binder.get(), name.c_str()), EX_NONE);
  EXPECT_EQ(told, std::vector<std::string>(2, name));
}

TEST_F(DeviceStyleHostTest, ARegisteredBinderLivesWithoutAnotherReference) {
  AIBinder* const binder = service->asBinder().get();
  AIBinder_incStrong(binder);
  EXPECT_EQ(IStats::fromBinder(SpAIBinder(binder)), service);
}

TEST(DeviceStyleBinderTest, EachCopyKeepsTheService) {
  std::shared_ptr<StatsService> service = ndk::SharedRefBase::make<StatsService>();
  const std::weak_ptr<StatsService> watched = service;
  SpAIBinder first = service->asBinder();
  service.reset();
  {
    SpAIBinder copy(first);
    SpAIBinder other;
    other = copy;
    first.set(nullptr);
    copy = std::move(other);  // NOLINT(performance-move-const-arg): a move is a copy, as there.
    EXPECT_EQ(other, copy.get());  // NOLINT(bugprone-use-after-move)
    AIBinder_incStrong(copy.get());
    *first.getR() = copy.get();
    const SpAIBinder& itself = first;
    first = itself;
  }
  EXPECT_FALSE(watched.expired());
  first = nullptr;
  EXPECT_TRUE(watched.expired());
}

TEST(DeviceStyleStatusTest, AStatusSaysWhatItWasMadeOf) {
  using Content = std::tuple<bool, binder_exception_t, std::int32_t, binder_status_t, std::string>;
  const struct {
    ScopedAStatus status;
    Content content;
  } kCases[] = {
      {ScopedAStatus::ok(), {true, EX_NONE, 0, STATUS_OK, ""}},
      {ScopedAStatus::fromStatus(STATUS_OK), {true, EX_NONE, 0, STATUS_OK, ""}},
      {ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT),
       {false, EX_TRANSACTION_FAILED, 0, STATUS_DEAD_OBJECT, ""}},
      {ScopedAStatus::fromExceptionCode(EX_SECURITY), {false, EX_SECURITY, 0, STATUS_OK, ""}},
      {ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, "why"),
       {false, EX_ILLEGAL_STATE, 0, STATUS_OK, "why"}},
      {ScopedAStatus::fromServiceSpecificError(-7),
       {false, EX_SERVICE_SPECIFIC, -7, STATUS_OK, ""}},
      {ScopedAStatus::fromServiceSpecificErrorWithMessage(7, "why"),
       {false, EX_SERVICE_SPECIFIC, 7, STATUS_OK, "why"}}};
  for (const auto& [status, content] : kCases) {
    EXPECT_EQ(Content(status.isOk(), status.getExceptionCode(), status.getServiceSpecificError(),
                      status.getStatus(), status.getMessage()),
              content)
        << status.getDescription();
  }
  EXPECT_FALSE(ScopedAStatus().isOk());
}

TEST(DeviceStyleStatusTest, ADescriptionNamesWhatIsKnown) {
  const std::pair<ScopedAStatus, std::string> kCases[] = {
      {ScopedAStatus::ok(), "No error"},
      {ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT),
       "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '"},
      {ScopedAStatus::fromStatus(-12345), "Status(-129, EX_TRANSACTION_FAILED): 'UNKNOWN_ERROR: '"},
      {ScopedAStatus::fromExceptionCodeWithMessage(-77, "why"),
       "Status(-129, EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: why'"},
      {ScopedAStatus::fromExceptionCodeWithMessage(EX_SECURITY, "why"),
       "Status(-1, EX_SECURITY): 'why'"},
      {ScopedAStatus::fromServiceSpecificErrorWithMessage(7, "why"),
       "Status(-8, EX_SERVICE_SPECIFIC): '7: why'"}};
  for (const auto& [status, description] : kCases) EXPECT_EQ(status.getDescription(), description);
}

TEST(DeviceStyleTextTest, AnAnnotationHasItsNameAndAFloatSixDigits) {
  Annotation annotation = {AnnotationId::EXCLUSIVE_STATE, true};
  EXPECT_NE(annotation.toString().find("EXCLUSIVE_STATE"), std::string::npos);
  annotation.annotationId = AnnotationId{19};
  EXPECT_NE(annotation.toString().find("annotationId: 19,"), std::string::npos);
  EXPECT_EQ(aidl::android::frameworks::stats::VendorAtomValue(0.1F).toString(),
            "VendorAtomValue{floatValue: 0.100000}");
}

}  // namespace
}  // namespace device_style_host
