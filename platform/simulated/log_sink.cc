#include "platform/simulated/log_sink.h"

#include <android/log.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

#include "platform/sync.h"

#include "platform/thread_annotations.h"

namespace sensorvela::simulated {
namespace {

// The device's log library formats into a buffer of this size: it cuts a line after 1,023 bytes.
constexpr std::size_t kLineBufferBytes = 1024;

void PrintLikeTheDevice(int priority, std::string_view tag, std::string_view text) {
  const auto now_ns = platform::MonotonicClock::now().time_since_epoch().count();
  constexpr std::string_view kLetters = "??VDIWEF";
  const char letter = priority >= 0 && static_cast<std::size_t>(priority) < kLetters.size()
                          ? kLetters[static_cast<std::size_t>(priority)]
                          : '?';
  std::fprintf(stderr, "%6lld.%06lld %5d %5ld %c %.*s: %.*s\n",
               static_cast<long long>(now_ns / 1'000'000'000),
               static_cast<long long>(now_ns / 1'000 % 1'000'000), getpid(), syscall(SYS_gettid),
               letter, static_cast<int>(tag.size()), tag.data(), static_cast<int>(text.size()),
               text.data());
}

struct Log {
  platform::Mutex mutex;
  LogSink sink SENSORVELA_GUARDED_BY(mutex) = PrintLikeTheDevice;
};

// Never destroyed: threads may log while the process exits.
Log& the_log = *new Log;

}  // namespace

ScopedLogSink::ScopedLogSink(LogSink sink) : previous_(std::move(sink)) {
  const platform::MutexLock lock(the_log.mutex);
  std::swap(the_log.sink, previous_);
}

ScopedLogSink::~ScopedLogSink() {
  const platform::MutexLock lock(the_log.mutex);
  the_log.sink = std::move(previous_);
}

}  // namespace sensorvela::simulated

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  std::va_list args;
  va_start(args, fmt);
  const int result = __android_log_vprint(prio, tag, fmt, args);
  va_end(args);
  return result;
}

int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list args) {
  std::array<char, sensorvela::simulated::kLineBufferBytes> line;
  const int length = std::vsnprintf(line.data(), line.size(), fmt, args);
  return length < 0 ? length : __android_log_write(prio, tag, line.data());
}

int __android_log_is_loggable(int prio, const char* /*tag*/, int default_prio) {
  return prio >= default_prio ? 1 : 0;
}

int __android_log_write(int prio, const char* tag, const char* text) {
  using sensorvela::simulated::the_log;
  const sensorvela::platform::MutexLock lock(the_log.mutex);
  the_log.sink(prio, tag, text);
  return 1;
}
