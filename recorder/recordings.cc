#include "recorder/recordings.h"

#include <pthread.h>
#include <sys/auxv.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "recorder/next_definition.h"

#include "platform/thread_annotations.h"

namespace sensorvela::recorder {

using platform::MutexLock;

namespace {

/// What the environment says; null in a process with raised privileges.
const char* Setting(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): a host does not change its environment any more.
  return getauxval(AT_SECURE) == 0 ? std::getenv(name) : nullptr;
}

/// Where the engines are to be recorded; null if they are not.
const char* RequestedPath() {
  const char* const path = Setting("SENSORVELA_RECORDING");
  return path != nullptr && *path != '\0' ? path : nullptr;
}

}  // namespace

Recordings& Recordings::Get() {
  // Never destroyed: threads may call engines while the process exits.
  static Recordings& recordings = []() -> Recordings& {
    pthread_atfork(nullptr, nullptr, [] { Get().ForgetAll(); });
    return *new Recordings;
  }();
  return recordings;
}

std::shared_ptr<Recording> Recordings::Begin(const SensorVela* engine, std::string_view supplier) {
  const char* const path = RequestedPath();
  if (path == nullptr || is_forked_) return nullptr;
  has_begun_ = true;
  const char* const wait = Setting("SENSORVELA_RECORDING_WAIT");
  const Recording::Options options = {
      .path = path,
      .waits_for_disk = wait != nullptr && std::string_view(wait) == "1",
      .limits = limits_};

  const MutexLock lock(mutex_);
  auto* const slot = std::ranges::find_if(slots_, [](const Slot& s) {
    return s.engine == nullptr && (s.recording == nullptr || s.recording->is_written());
  });
  if (slot == slots_.end()) {
    LogNoRecording(path, "eight engines are recorded already");
    return nullptr;
  }
  slot->recording = Recording::Start(options, supplier);
  if (slot->recording != nullptr) slot->engine.store(engine, std::memory_order_release);
  return slot->recording;
}

void Recordings::ProcessEnds() {
  if (is_forked_) return;
  const char* const path = RequestedPath();
  if (path != nullptr && !has_begun_ && FindLibrary() != nullptr) {
    LogNoRecording(path, "no engine was constructed through the recorder");
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  ForEach([&](Recording& recording) { recording.ProcessEnds(deadline); });
}

std::shared_ptr<Recording> Recordings::Remove(const SensorVela* engine) {
  const MutexLock lock(mutex_);
  auto* const slot =
      std::ranges::find_if(slots_, [&](const Slot& s) { return s.engine == engine; });
  if (slot == slots_.end()) return nullptr;
  slot->engine = nullptr;
  return slot->recording;
}

std::vector<std::shared_ptr<Recording>> Recordings::All() {
  std::vector<std::shared_ptr<Recording>> recordings;
  if (is_forked_) return recordings;
  const MutexLock lock(mutex_);
  for (const Slot& slot : slots_) {
    if (slot.recording != nullptr) recordings.push_back(slot.recording);
  }
  return recordings;
}

}  // namespace sensorvela::recorder
