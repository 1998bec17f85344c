#include "tools/log/read_lines.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace sensorvela::devicelog {
namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

std::string_view WithoutCarriageReturns(std::string_view line) {
  while (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

/// What cannot be read, by how it starts; empty for a text.
std::string WhyNoText(std::string_view start) {
  if (start.starts_with("PK\x03\x04")) return "is a zip archive: unzip it first";
  if (start.starts_with("\xff\xfe") || start.starts_with("\xfe\xff")) {
    return "is UTF-16: convert it to UTF-8 first";
  }
  return "";
}

std::string ReadError(gzFile file) {
  const int system_error = errno;
  int error = Z_OK;
  gzerror(file, &error);
  if (error == Z_ERRNO) return std::generic_category().message(system_error);
  return error == Z_OK ? "" : "its gzip data is cut or damaged";
}

}  // namespace

std::string ReadLines(int file, const std::function<void(std::string_view line)>& on_line) {
  // zlib reads what is not compressed as it is, and keeps no more of a pipe than a block.
  const int copy = dup(file);
  if (copy < 0) return std::generic_category().message(errno);
  const std::unique_ptr<gzFile_s, int (*)(gzFile)> input(gzdopen(copy, "rb"), gzclose_r);
  if (input == nullptr) {
    close(copy);
    return std::generic_category().message(ENOMEM);
  }
  std::vector<char> buffer(kBlockBytes);
  std::size_t filled = 0;
  bool skip_to_line_end = false;
  const auto give = [&](std::string_view line) {
    if (!skip_to_line_end) on_line(WithoutCarriageReturns(line));
    skip_to_line_end = false;
  };
  bool is_first = true;
  while (true) {
    const int read_bytes =
        gzread(input.get(), buffer.data() + filled, static_cast<unsigned>(buffer.size() - filled));
    if (read_bytes < 0) return ReadError(input.get());
    if (read_bytes == 0) break;
    filled += static_cast<std::size_t>(read_bytes);

    std::string_view rest(buffer.data(), filled);
    if (is_first) {
      if (std::string why = WhyNoText(rest); !why.empty()) return why;
      if (rest.starts_with("\xef\xbb\xbf")) rest.remove_prefix(3);
      is_first = false;
    }
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
  return ReadError(input.get());
}

}  // namespace sensorvela::devicelog
