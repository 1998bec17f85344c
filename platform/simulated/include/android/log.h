// The simulated platform's stand-in for the device's log header.
#pragma once

#include <cstdarg>

typedef enum android_LogPriority {
  ANDROID_LOG_UNKNOWN = 0,
  ANDROID_LOG_DEFAULT,
  ANDROID_LOG_VERBOSE,
  ANDROID_LOG_DEBUG,
  ANDROID_LOG_INFO,
  ANDROID_LOG_WARN,
  ANDROID_LOG_ERROR,
  ANDROID_LOG_FATAL,
  ANDROID_LOG_SILENT,
} android_LogPriority;

extern "C" {

/// Writes one line to the log; platform/simulated/log_sink.h says where it goes. Returns 1, or a
/// negative number for a format that cannot be printed. Safe on any thread.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

/// The same for a list of arguments.
int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list args)
    __attribute__((format(printf, 3, 0)));

/// Whether a line of that priority is written: not below `default_prio`. 1 or 0.
int __android_log_is_loggable(int prio, const char* tag, int default_prio);

/// The same as `__android_log_print` for a text as it is.
int __android_log_write(int prio, const char* tag, const char* text);

}  // extern "C"
