// Lets the device's own library print a line in every form and with every combination of modifiers,
// and has sensorvela-log's reader read it. Prints how many there were; fails if one is not read.
#include <log/logprint.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>

#include "engine/log_tag.h"
#include "tools/log/log_line.h"

namespace {

using sensorvela::tools::LogLine;
using sensorvela::tools::LogLines;

constexpr std::array kForms = {"brief", "process", "tag", "time", "threadtime", "long"};
constexpr std::array kModifiers = {"year", "usec",  "nsec",      "zone",
                                   "uid",  "epoch", "monotonic", "color"};
constexpr unsigned kCombinations = 1u << kModifiers.size();

std::string Print(const char* form, unsigned modifiers) {
  AndroidLogFormat* const format = android_log_format_new();
  android_log_setPrintFormat(format, android_log_formatFromString(form));
  for (std::size_t i = 0; i < kModifiers.size(); ++i) {
    if ((modifiers >> i & 1) == 0) continue;
    android_log_setPrintFormat(format, android_log_formatFromString(kModifiers[i]));
  }
  const std::string tag = sensorvela::kLogTag;
  const std::string text = "Failed to get IStats service. Atoms are dropped.";
  const AndroidLogEntry entry = {.tv_sec = 1'795'442'401,
                                 .tv_nsec = 123'000'000,
                                 .priority = ANDROID_LOG_ERROR,
                                 .uid = 1000,
                                 .pid = 812,
                                 .tid = 830,
                                 .tag = tag.c_str(),
                                 .tagLen = tag.size(),
                                 .messageLen = text.size(),
                                 .message = text.c_str()};
  std::array<char, 1024> buffer;
  std::size_t size = 0;
  android_log_formatLogLine(format, buffer.data(), buffer.size(), &entry, &size);
  android_log_format_free(format);
  return {buffer.data(), size};
}

bool IsRead(const std::string& form, const std::string& printed) {
  LogLines lines(sensorvela::kLogTag);
  std::istringstream stream(printed);
  std::optional<LogLine> found;
  for (std::string line; !found && std::getline(stream, line);) {
    found = lines.Read(line);
    if (found && found->text != "Failed to get IStats service. Atoms are dropped.") return false;
  }
  const bool has_tid = form == "threadtime" || form == "long";
  const bool has_time = has_tid || form == "time";
  return found && found->priority == 'E' && found->pid.value_or(0) == (form == "tag" ? 0 : 812) &&
         found->tid.value_or(0) == (has_tid ? 830 : 0) && found->time.text.empty() != has_time &&
         (!has_time || found->time.ns % 1'000'000'000 == 123'000'000);
}

}  // namespace

int main() {
  for (const char* form : kForms) {
    for (unsigned modifiers = 0; modifiers < kCombinations; ++modifiers) {
      const std::string printed = Print(form, modifiers);
      if (IsRead(form, printed)) continue;
      std::fprintf(stderr, "error: form %s, modifiers %u, is not read:\n%s", form, modifiers,
                   printed.c_str());
      return 1;
    }
  }
  std::printf("%zu\n", kForms.size() * kCombinations);
  return 0;
}
