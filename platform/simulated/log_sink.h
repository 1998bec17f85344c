// Redirects the log of the simulated platform.
#pragma once

#include <functional>
#include <string_view>

namespace sensorvela::simulated {

/// Receives one line: the Android priority, the tag and the text without a line end. Calls come one
/// at a time, on the thread that logs, which may hold an engine lock: a sink must not call an
/// engine.
using LogSink = std::function<void(int priority, std::string_view tag, std::string_view text)>;

/// Sends every log line to `sink` from construction to destruction; nested sinks must be destroyed
/// in the reverse order of their construction. Without a sink, lines go to standard error in the
/// device's format: seconds, process, thread, priority, tag, text.
class ScopedLogSink {
 public:
  explicit ScopedLogSink(LogSink sink);
  ~ScopedLogSink();
  ScopedLogSink(const ScopedLogSink&) = delete;
  ScopedLogSink& operator=(const ScopedLogSink&) = delete;

 private:
  LogSink previous_;
};

}  // namespace sensorvela::simulated
