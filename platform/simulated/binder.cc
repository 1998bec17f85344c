#include <aidl/android/frameworks/stats/BnStats.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_status.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/sync.h"

#include "platform/thread_annotations.h"

using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::IStats;
using sensorvela::platform::MutexLock;

struct AIBinder {
  std::shared_ptr<IStats> service;
  int references = 0;
};

struct AStatus {
  binder_exception_t exception = EX_NONE;
  std::int32_t service_specific_error = 0;
  binder_status_t status = STATUS_OK;
  std::string message = {};
};

namespace {

/// The binder of each service that has one. A binder keeps its service; the last reference frees
/// both.
struct Binders {
  sensorvela::platform::Mutex mutex;
  std::map<IStats*, std::unique_ptr<AIBinder>> by_service SENSORVELA_GUARDED_BY(mutex);
};

// Never destroyed: a reporter thread may hold a binder while the process exits.
Binders& binders = *new Binders;

std::string Text(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

void AIBinder_incStrong(AIBinder* binder) {
  if (binder == nullptr) return;
  const MutexLock lock(binders.mutex);
  ++binder->references;
}

void AIBinder_decStrong(AIBinder* binder) {
  if (binder == nullptr) return;
  std::unique_ptr<AIBinder> retired;  // Freed without the lock: a service may call back.
  const MutexLock lock(binders.mutex);
  if (--binder->references > 0) return;
  const auto entry = binders.by_service.find(binder->service.get());
  retired = std::move(entry->second);
  binders.by_service.erase(entry);
}

bool AIBinder_isRemote(const AIBinder*) { return false; }
bool AIBinder_isAlive(const AIBinder* binder) { return binder != nullptr; }

AStatus* AStatus_newOk() { return new AStatus; }
AStatus* AStatus_fromStatus(binder_status_t status) {
  const binder_exception_t exception = status == STATUS_OK ? EX_NONE : EX_TRANSACTION_FAILED;
  return new AStatus{exception, 0, status};
}
AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
  return AStatus_fromExceptionCodeWithMessage(exception, nullptr);
}
AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
  const bool failed = exception == EX_TRANSACTION_FAILED;
  return new AStatus{exception, 0, failed ? STATUS_FAILED_TRANSACTION : STATUS_OK, Text(message)};
}
AStatus* AStatus_fromServiceSpecificError(std::int32_t error) {
  return AStatus_fromServiceSpecificErrorWithMessage(error, nullptr);
}
AStatus* AStatus_fromServiceSpecificErrorWithMessage(std::int32_t error, const char* message) {
  return new AStatus{EX_SERVICE_SPECIFIC, error, STATUS_OK, Text(message)};
}

bool AStatus_isOk(const AStatus* status) { return status->exception == EX_NONE; }
binder_exception_t AStatus_getExceptionCode(const AStatus* status) { return status->exception; }
std::int32_t AStatus_getServiceSpecificError(const AStatus* status) {
  return status->service_specific_error;
}
binder_status_t AStatus_getStatus(const AStatus* status) { return status->status; }
const char* AStatus_getMessage(const AStatus* status) { return status->message.c_str(); }

const char* AStatus_getDescription(const AStatus* status) {
  const std::string text = "Status(" + std::to_string(status->exception) + ", " +
                           std::to_string(status->service_specific_error) + ", " +
                           std::to_string(status->status) + "): '" + status->message + "'";
  char* const description = new char[text.size() + 1];
  std::memcpy(description, text.c_str(), text.size() + 1);
  return description;
}
void AStatus_deleteDescription(const char* description) { delete[] description; }
void AStatus_delete(AStatus* status) { delete status; }

binder_status_t ndk::ICInterface::dump(int /*fd*/, const char** /*args*/, std::uint32_t /*count*/) {
  return STATUS_OK;
}

namespace aidl::android::frameworks::stats {

const char* IStats::descriptor = "android.frameworks.stats.IStats";

IStats::IStats() = default;
IStats::~IStats() = default;

std::shared_ptr<IStats> IStats::fromBinder(const ndk::SpAIBinder& binder) {
  return binder.get() == nullptr ? nullptr : binder.get()->service;
}

BnStats::BnStats() = default;
BnStats::~BnStats() = default;

ndk::ScopedAStatus BnStats::getInterfaceVersion(std::int32_t* result) {
  *result = 2;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnStats::getInterfaceHash(std::string* result) {
  *result = "simulated";
  return ndk::ScopedAStatus::ok();
}

ndk::SpAIBinder BnStats::createBinder() {
  std::shared_ptr<IStats> service = ref<IStats>();
  if (service == nullptr) return nullptr;
  const MutexLock lock(binders.mutex);
  std::unique_ptr<AIBinder>& binder = binders.by_service[service.get()];
  if (binder == nullptr) binder = std::make_unique<AIBinder>(AIBinder{std::move(service)});
  ++binder->references;
  return ndk::SpAIBinder(binder.get());
}

}  // namespace aidl::android::frameworks::stats
