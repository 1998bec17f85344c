// The simulated platform's stand-in for the device's log header: what the library uses of it.
#pragma once

enum android_LogPriority {
  ANDROID_LOG_INFO = 4,
  ANDROID_LOG_ERROR = 6,
};

extern "C" {

/// Writes one line to the log; platform/simulated/log_sink.h says where it goes. Returns 1, or a
/// negative number for a format that cannot be printed. Safe on any thread.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

}  // extern "C"
