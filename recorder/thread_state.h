// What the recorder knows of each thread.
#pragma once

#include <cstdint>

namespace sensorvela::recorder {

class Recording;

struct ThreadState {
  /// The recording of the engine whose reporter thread this is; null for all other threads.
  Recording* reports_for;
  /// The recording whose turn the thread has; null if it has none.
  Recording* turn_of;
  /// The thread is in a call of the engine that is recorded already.
  bool is_in_engine;
  /// The engine's reporter thread is in the host's supplier.
  bool is_in_supplier;
  /// Whether the thread has read elapsed realtime since its last recorded call began, and the
  /// latest reading.
  bool has_reading;
  std::int64_t reading_ns;
};

/// The calling thread's.
inline ThreadState& ThisThread() {
  // A library that is loaded before the program may use the fast model.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit ThreadState state = {};
  return state;
}

/// The recording of the engine that makes the present call of the device; null if another makes it.
inline Recording* RecordingOfCaller() {
  const ThreadState& thread = ThisThread();
  return thread.is_in_engine || thread.is_in_supplier ? nullptr : thread.reports_for;
}

}  // namespace sensorvela::recorder
