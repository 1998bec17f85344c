// Takes the place of the device's functions that the library calls. Each passes the call on.
#include <android/binder_manager.h>
#include <android/binder_status.h>
#include <android/log.h>
#include <utils/SystemClock.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "engine/log_tag.h"
#include "engine/stats_service.h"
#include "recorder/next_definition.h"
#include "recorder/recordings.h"

namespace sensorvela::recorder {
namespace {

bool IsStatsService(std::string_view instance) {
  static const std::string name = StatsInstance();
  return instance == name;
}

}  // namespace
}  // namespace sensorvela::recorder

using aidl::android::frameworks::stats::IStats;
using sensorvela::recorder::IsStatsService;
using sensorvela::recorder::NextDefinition;
using sensorvela::recorder::Recording;
using sensorvela::recorder::RecordingOfCaller;
using sensorvela::recorder::ThisThread;

[[gnu::visibility("default")]] bool AServiceManager_isDeclared(const char* instance) {
  static const auto next = NextDefinition(&AServiceManager_isDeclared);
  const bool is_declared = next(instance);
  Recording* const recording = IsStatsService(instance) ? RecordingOfCaller() : nullptr;
  if (is_declared && recording != nullptr) recording->ServiceFoundDeclared();
  return is_declared;
}

[[gnu::visibility("default")]] AIBinder* AServiceManager_waitForService(const char* instance) {
  static const auto next = NextDefinition(&AServiceManager_waitForService);
  Recording* const recording = IsStatsService(instance) ? RecordingOfCaller() : nullptr;
  if (recording != nullptr) recording->LookupBegins();
  return next(instance);
}

// The second half of a lookup: it may wait for the service's process, and finds none if that is
// dead.
[[gnu::visibility("default")]] std::shared_ptr<IStats> IStats::fromBinder(
    const ndk::SpAIBinder& binder) {
  static const auto next = NextDefinition(&IStats::fromBinder);
  std::shared_ptr<IStats> service = next(binder);
  Recording* const recording = RecordingOfCaller();
  if (recording != nullptr) recording->LookupEnds(service != nullptr);
  return service;
}

[[gnu::visibility("default")]] bool AStatus_isOk(const AStatus* status) {
  static const auto next = NextDefinition(&AStatus_isOk);
  const bool is_ok = next(status);
  Recording* const recording = RecordingOfCaller();
  if (recording != nullptr) recording->ReportEnds(is_ok);
  return is_ok;
}

[[gnu::visibility("default")]] int __android_log_print(int prio, const char* tag, const char* fmt,
                                                       ...) {
  Recording* const recording = RecordingOfCaller();
  if (recording != nullptr && prio == ANDROID_LOG_ERROR && tag != nullptr &&
      std::strcmp(tag, sensorvela::kLogTag) == 0) {
    recording->EngineLogsError();
  }
  // The size of the device's own buffer.
  std::array<char, 1024> line;
  std::va_list args;
  va_start(args, fmt);
  const int length = std::vsnprintf(line.data(), line.size(), fmt, args);
  va_end(args);
  return length < 0 ? length : __android_log_write(prio, tag, line.data());
}

[[gnu::visibility("default")]] std::int64_t android::elapsedRealtimeNano() {
  static const auto next = NextDefinition(&elapsedRealtimeNano);
  sensorvela::recorder::ThreadState& thread = ThisThread();
  thread.reading_ns = next();
  thread.has_reading = true;
  return thread.reading_ns;
}
