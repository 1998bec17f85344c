#include "tools/command/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

namespace sensorvela::tools {
namespace {

/// Empty for a variable that is not set.
std::string_view Variable(const char* name) {
  // No other thread runs yet that could change the environment.
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
  return value == nullptr ? std::string_view() : value;
}

}  // namespace

std::optional<std::size_t> TerminalWidth() {
  if (isatty(STDOUT_FILENO) == 0) return std::nullopt;
  const std::string_view text = Variable("COLUMNS");
  std::size_t columns = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), columns);
  if (error == std::errc() && end == text.data() + text.size() && columns > 0) return columns;
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

bool ShowsColor() {
  return isatty(STDOUT_FILENO) != 0 && Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
}

}  // namespace sensorvela::tools
