#include "recorder/recordings.h"

#include <sys/auxv.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace sensorvela::recorder {

using platform::MutexLock;

namespace {

/// What the environment says; a process with raised privileges does not listen to it.
const char* Setting(const char* name) {
  return getauxval(AT_SECURE) == 0 ? std::getenv(name) : nullptr;
}

}  // namespace

// Never destroyed: threads may call engines while the process exits.
Recordings& Recordings::Get() {
  static Recordings& recordings = *new Recordings;
  return recordings;
}

std::shared_ptr<Recording> Recordings::Begin(SupplierKind supplier) {
  const char* const path = Setting("SENSORVELA_RECORDING");
  if (path == nullptr || *path == '\0') return nullptr;
  const char* const wait = Setting("SENSORVELA_RECORDING_WAIT");
  const MutexLock lock(mutex_);
  while (starting_ != nullptr) identified_.wait(mutex_);
  const auto slot = std::ranges::find(slots_, nullptr, &Slot::recording);
  if (slot == slots_.end()) return nullptr;
  slot->recording = Recording::Start(
      {.path = path, .waits_for_disk = wait != nullptr && std::string_view(wait) == "1"});
  if (slot->recording == nullptr) return nullptr;
  slot->recording->EngineStarts(supplier);
  starting_ = slot->recording.get();
  return slot->recording;
}

void Recordings::EngineIsConstructed(const std::shared_ptr<Recording>& recording,
                                     const SensorVela* engine) {
  const MutexLock lock(mutex_);
  const auto slot = std::ranges::find(slots_, recording, &Slot::recording);
  slot->engine.store(engine, std::memory_order_release);
  if (engine != nullptr) return;
  slot->recording = nullptr;
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
  const auto slot = std::ranges::find_if(slots_, [&](const Slot& s) { return s.engine == engine; });
  if (slot == slots_.end()) return nullptr;
  slot->engine = nullptr;
  return std::exchange(slot->recording, nullptr);
}

std::vector<std::shared_ptr<Recording>> Recordings::All() {
  const MutexLock lock(mutex_);
  std::vector<std::shared_ptr<Recording>> recordings;
  for (const Slot& slot : slots_) {
    if (slot.recording != nullptr) recordings.push_back(slot.recording);
  }
  return recordings;
}

}  // namespace sensorvela::recorder
