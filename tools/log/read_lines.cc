#include "tools/log/read_lines.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string_view>
#include <vector>

namespace sensorvela::devicelog {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

std::string_view WithoutCarriageReturns(std::string_view line) {
  while (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace

int ReadLines(int file, const std::function<void(std::string_view line)>& on_line) {
  std::vector<char> buffer(kBlockBytes);
  std::size_t filled = 0;
  bool skip_to_line_end = false;
  const auto give = [&](std::string_view line) {
    if (!skip_to_line_end) on_line(WithoutCarriageReturns(line));
    skip_to_line_end = false;
  };
  while (true) {
    const ssize_t read_bytes = read(file, buffer.data() + filled, buffer.size() - filled);
    if (read_bytes < 0 && errno == EINTR) continue;
    if (read_bytes < 0) return errno;
    if (read_bytes == 0) break;
    filled += static_cast<std::size_t>(read_bytes);

    std::string_view rest(buffer.data(), filled);
    for (std::size_t end = 0; (end = rest.find('\n')) != std::string_view::npos;) {
      give(rest.substr(0, end));
      rest.remove_prefix(end + 1);
    }
    if (rest.size() == buffer.size()) {
      give(rest);
      skip_to_line_end = true;
      rest.remove_prefix(rest.size());
    }
    std::memmove(buffer.data(), rest.data(), rest.size());
    filled = rest.size();
  }
  if (filled > 0) give({buffer.data(), filled});
  return 0;
}

}  // namespace sensorvela::devicelog
