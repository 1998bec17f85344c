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

Recordings::Recordings() {
  pthread_atfork(nullptr, nullptr, [] { Get().ForgetAll(); });
}

Recordings& Recordings::Get() {
  // Never destroyed: threads may call engines while the process exits.
  static Recordings& recordings = *new Recordings;
  return recordings;
}

std::shared_ptr<Recording> Recordings::Begin(std::string_view supplier) {
  const char* const path = Setting("SENSORVELA_RECORDING");
  if (path == nullptr || *path == '\0' || is_forked_) return nullptr;
  const char* const wait = Setting("SENSORVELA_RECORDING_WAIT");
  const Recording::Options options = {
      .path = path, .waits_for_disk = wait != nullptr && std::string_view(wait) == "1"};

  const MutexLock lock(mutex_);
  AwaitIdentification();
  auto* const slot = std::ranges::find_if(slots_, [](const Slot& s) {
    return s.engine == nullptr && (s.recording == nullptr || s.recording->is_written());
  });
  if (slot == slots_.end()) return nullptr;
  slot->recording = Recording::Start(options, supplier);
  starting_ = slot->recording.get();
  return slot->recording;
}

void Recordings::AwaitIdentification() {
  // Another engine that waits here, too, can be the next one that starts.
  while (const Recording* const awaited = starting_) {
    const auto is_over = [&]() SENSORVELA_REQUIRES(mutex_) { return starting_ != awaited; };
    if (!identified_.wait_for(mutex_, std::chrono::seconds(1), is_over)) starting_ = nullptr;
  }
}

void Recordings::EngineIsConstructed(const std::shared_ptr<Recording>& recording,
                                     const SensorVela* engine) {
  const MutexLock lock(mutex_);
  // A recording that has failed may have lost its slot to another engine already.
  auto* const slot = std::ranges::find(slots_, recording, &Slot::recording);
  if (slot != slots_.end()) slot->engine.store(engine, std::memory_order_release);
  if (engine != nullptr || starting_ != recording.get()) return;
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
