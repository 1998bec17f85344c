#include "recorder/recordings.h"

#include <pthread.h>
#include <sys/auxv.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/thread_annotations.h"

namespace sensorvela::recorder {

using platform::MutexLock;

namespace {

/// What the environment says; null in a process with raised privileges.
const char* Setting(const char* name) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): a host does not change its environment any more.
  return getauxval(AT_SECURE) == 0 ? std::getenv(name) : nullptr;
}

}  // namespace

// Never destroyed: threads may call engines while the process exits.
Recordings::Recordings() {
  pthread_atfork(nullptr, nullptr, [] { Get().ForgetAll(); });
}

Recordings& Recordings::Get() {
  static Recordings& recordings = *new Recordings;
  return recordings;
}

std::shared_ptr<Recording> Recordings::Begin(SupplierKind supplier) {
  const char* const path = Setting("SENSORVELA_RECORDING");
  if (path == nullptr || *path == '\0' || is_forked_) return nullptr;
  const char* const wait = Setting("SENSORVELA_RECORDING_WAIT");
  auto recording = Recording::Start(
      {.path = path, .waits_for_disk = wait != nullptr && std::string_view(wait) == "1"}, supplier);
  if (recording == nullptr) return nullptr;
  const MutexLock lock(mutex_);
  const auto identified = [this]() SENSORVELA_REQUIRES(mutex_) { return starting_ == nullptr; };
  identified_.wait_for(mutex_, std::chrono::seconds(1), identified);
  auto* const slot = std::ranges::find_if(slots_, [](const Slot& s) {
    return s.engine == nullptr && (s.recording == nullptr || s.recording->is_written());
  });
  if (slot == slots_.end()) {
    recording->EngineEnds();
    return nullptr;
  }
  slot->recording = recording;
  starting_ = recording.get();
  return recording;
}

void Recordings::EngineIsConstructed(const std::shared_ptr<Recording>& recording,
                                     const SensorVela* engine) {
  const MutexLock lock(mutex_);
  auto* const slot = std::ranges::find(slots_, recording, &Slot::recording);
  slot->engine.store(engine, std::memory_order_release);
  if (engine != nullptr) return;
  starting_ = nullptr;
  identified_.notify_all();
}

void Recordings::IdentifyReporterThread() {
  const MutexLock lock(mutex_);
  if (starting_ == nullptr) return;
  ThisThread().reports_for = std::exchange(starting_, nullptr);
  identified_.notify_all();
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
