#include <aidl/android/frameworks/stats/BnStats.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_process.h>
#include <android/binder_status.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/simulated/death_recipient.h"
#include "platform/simulated/service_proxy.h"
#include "platform/sync.h"

#include "platform/thread_annotations.h"

using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::IStats;
using sensorvela::platform::MutexLock;
using sensorvela::simulated::FindInterface;
using sensorvela::simulated::ServiceProxy;

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

/// The service's, if it is in a process of its own; null otherwise.
ServiceProxy* ProxyOf(const AIBinder& binder) {
  return dynamic_cast<ServiceProxy*>(binder.service.get());
}

struct NamedNumber {
  std::int32_t number;
  const char* name;
};

// The last is what all others become.

constexpr NamedNumber kStatuses[] = {{STATUS_OK, "OK"},
                                     {STATUS_NO_MEMORY, "NO_MEMORY"},
                                     {STATUS_INVALID_OPERATION, "INVALID_OPERATION"},
                                     {STATUS_BAD_VALUE, "BAD_VALUE"},
                                     {STATUS_BAD_TYPE, "BAD_TYPE"},
                                     {STATUS_NAME_NOT_FOUND, "NAME_NOT_FOUND"},
                                     {STATUS_PERMISSION_DENIED, "PERMISSION_DENIED"},
                                     {STATUS_NO_INIT, "NO_INIT"},
                                     {STATUS_ALREADY_EXISTS, "ALREADY_EXISTS"},
                                     {STATUS_DEAD_OBJECT, "DEAD_OBJECT"},
                                     {STATUS_FAILED_TRANSACTION, "FAILED_TRANSACTION"},
                                     {STATUS_BAD_INDEX, "BAD_INDEX"},
                                     {STATUS_NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
                                     {STATUS_WOULD_BLOCK, "WOULD_BLOCK"},
                                     {STATUS_TIMED_OUT, "TIMED_OUT"},
                                     {STATUS_UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
                                     {STATUS_FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
                                     {STATUS_UNEXPECTED_NULL, "UNEXPECTED_NULL"},
                                     {STATUS_UNKNOWN_ERROR, "UNKNOWN_ERROR"}};

constexpr NamedNumber kExceptions[] = {{EX_NONE, "EX_NONE"},
                                       {EX_SECURITY, "EX_SECURITY"},
                                       {EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"},
                                       {EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"},
                                       {EX_NULL_POINTER, "EX_NULL_POINTER"},
                                       {EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"},
                                       {EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"},
                                       {EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"},
                                       {EX_SERVICE_SPECIFIC, "EX_SERVICE_SPECIFIC"},
                                       {EX_PARCELABLE, "EX_PARCELABLE"},
                                       {EX_TRANSACTION_FAILED, "EX_TRANSACTION_FAILED"}};

template <std::size_t size>
const NamedNumber& Find(const NamedNumber (&known)[size], std::int32_t number) {
  const auto* const found = std::ranges::find(known, number, &NamedNumber::number);
  return found != std::end(known) ? *found : known[size - 1];
}

std::string Describe(const AStatus& status) {
  if (status.exception == EX_NONE) return "No error";
  std::string detail;
  if (status.exception == EX_SERVICE_SPECIFIC) {
    detail = std::to_string(status.service_specific_error) + ": ";
  } else if (status.exception == EX_TRANSACTION_FAILED) {
    detail = std::string(Find(kStatuses, status.status).name) + ": ";
  }
  return "Status(" + std::to_string(status.exception) + ", " +
         Find(kExceptions, status.exception).name + "): '" + detail + status.message + "'";
}

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

bool AIBinder_isRemote(const AIBinder* binder) {
  return binder != nullptr && binder->service->isRemote();
}

bool AIBinder_isAlive(const AIBinder* binder) {
  if (binder == nullptr) return false;
  const ServiceProxy* const proxy = ProxyOf(*binder);
  return proxy == nullptr || proxy->process().is_alive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
  if (binder == nullptr) return STATUS_BAD_VALUE;
  return AIBinder_isAlive(binder) ? STATUS_OK : STATUS_DEAD_OBJECT;
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
    AIBinder_DeathRecipient_onBinderDied on_binder_died) {
  return on_binder_died == nullptr ? nullptr : new AIBinder_DeathRecipient{on_binder_died};
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) { delete recipient; }

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
  if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
  const ServiceProxy* const proxy = ProxyOf(*binder);
  if (proxy == nullptr) return STATUS_INVALID_OPERATION;
  return proxy->process().AddDeathLink({recipient, cookie}) ? STATUS_OK : STATUS_DEAD_OBJECT;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
  if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
  const ServiceProxy* const proxy = ProxyOf(*binder);
  if (proxy == nullptr) return STATUS_INVALID_OPERATION;
  return proxy->process().RemoveDeathLink({recipient, cookie}) ? STATUS_OK : STATUS_NAME_NOT_FOUND;
}

AStatus* AStatus_newOk() { return new AStatus; }
AStatus* AStatus_fromStatus(binder_status_t status) {
  const binder_exception_t exception = status == STATUS_OK ? EX_NONE : EX_TRANSACTION_FAILED;
  return new AStatus{exception, 0, Find(kStatuses, status).number};
}
AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
  return AStatus_fromExceptionCodeWithMessage(exception, nullptr);
}
AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
  const binder_exception_t known = Find(kExceptions, exception).number;
  const bool failed = known == EX_TRANSACTION_FAILED;
  return new AStatus{known, 0, failed ? STATUS_FAILED_TRANSACTION : STATUS_OK, Text(message)};
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
  const std::string text = Describe(*status);
  char* const description = new char[text.size() + 1];
  std::memcpy(description, text.c_str(), text.size() + 1);
  return description;
}
void AStatus_deleteDescription(const char* description) { delete[] description; }
void AStatus_delete(AStatus* status) { delete status; }

void ABinderProcess_startThreadPool() {}
bool ABinderProcess_setThreadPoolMaxThreadCount(std::uint32_t /*num_threads*/) { return true; }
void ABinderProcess_joinThreadPool() {
  for (;;) pause();
}

binder_status_t ndk::ICInterface::dump(int /*fd*/, const char** /*args*/, std::uint32_t /*count*/) {
  return STATUS_OK;
}

namespace aidl::android::frameworks::stats {

const char* IStats::descriptor = "android.frameworks.stats.IStats";

IStats::IStats() = default;
IStats::~IStats() = default;

std::shared_ptr<IStats> IStats::fromBinder(const ndk::SpAIBinder& binder) {
  if (binder.get() == nullptr) return nullptr;
  ServiceProxy* const proxy = ProxyOf(*binder.get());
  return proxy == nullptr || FindInterface(*proxy) ? binder.get()->service : nullptr;
}

BnStats::BnStats() = default;
BnStats::~BnStats() = default;

ndk::ScopedAStatus BnStats::getInterfaceVersion(std::int32_t* result) {
  *result = version;
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
