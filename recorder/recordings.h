// Which engine of the process is recorded where.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>

#include "platform/sync.h"
#include "recorder/batch.h"
#include "recorder/recording.h"

#include "platform/thread_annotations.h"

namespace sensorvela::recorder {

/// The recordings of the process's engines. Any thread may call any method at any time.
class Recordings {
 public:
  static Recordings& Get();

  explicit Recordings(const Batch::Limits& limits = {}) : limits_(limits) {}
  Recordings(const Recordings&) = delete;
  Recordings& operator=(const Recordings&) = delete;

  /// The recording of an engine that is about to be constructed; null if the environment asks for
  /// none or the process runs with raised privileges, and, with a line in the log, if `kMaxEngines`
  /// are recorded already or the system refuses a thread or the memory.
  std::shared_ptr<Recording> Begin(const SensorVela* engine, std::string_view supplier)
      SENSORVELA_EXCLUDES(mutex_);

  /// The recording of the engine, active or not, or null. Takes no lock. The engine must not be
  /// destroyed meanwhile.
  Recording* Find(const SensorVela* engine) const {
    for (const Slot& slot : slots_) {
      if (slot.engine.load(std::memory_order_acquire) == engine) return slot.recording.get();
    }
    return nullptr;
  }

  /// Forgets the engine, and returns its recording, active or not, or null. `ForEach` still has the
  /// recording until it is written.
  std::shared_ptr<Recording> Remove(const SensorVela* engine) SENSORVELA_EXCLUDES(mutex_);

  /// The process is ending. Waits for the writers, as `Recording::ProcessEnds` does.
  void ProcessEnds() SENSORVELA_EXCLUDES(mutex_);

  template <typename Function>
  void ForEach(const Function& function) SENSORVELA_EXCLUDES(mutex_) {
    for (const auto& recording : All()) function(*recording);
  }

 private:
  static constexpr std::size_t kMaxEngines = 8;

  struct Slot {
    std::atomic<const SensorVela*> engine = nullptr;
    /// The slot is free if this is null, or written and without an engine. Changed only while
    /// `engine` is null, under the lock.
    std::shared_ptr<Recording> recording;
  };

  std::vector<std::shared_ptr<Recording>> All() SENSORVELA_EXCLUDES(mutex_);
  /// In a process that has been forked off: nothing is recorded there.
  void ForgetAll() {
    for (Slot& slot : slots_) slot.engine = nullptr;
    is_forked_ = true;
  }

  const Batch::Limits limits_;
  platform::Mutex mutex_;
  std::array<Slot, kMaxEngines> slots_;
  std::atomic<bool> is_forked_ = false;
  std::atomic<bool> has_begun_ = false;
};

}  // namespace sensorvela::recorder

#include "platform/thread_annotations_end.h"
