// What the recorder knows of each thread.
#pragma once

#include <cstdint>

namespace sensorvela::recorder {

class Recording;

struct ThreadState {
  /// The recording of the engine whose reporter thread this is; null for all other threads.
  Recording* reports_for;
  /// The thread is in a call of the engine that is recorded already.
  bool is_in_engine;
  /// Whether the thread has read elapsed realtime in that call, and what it has read last.
  bool has_reading;
  std::int64_t reading_ns;
};

/// The calling thread's.
inline ThreadState& ThisThread() {
  // A library that is loaded before the program may use the fast model.
  [[gnu::tls_model("initial-exec")]] static thread_local constinit ThreadState state = {};
  return state;
}

}  // namespace sensorvela::recorder
