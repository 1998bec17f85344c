#include "tools/log/read_lines.h"

#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "tools/input/line_reader.h"

namespace sensorvela::tools {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

/// What cannot be read, by how it starts; empty for a text.
std::string WhyNoText(std::string_view start) {
  if (start.starts_with("PK\x03\x04")) return "is a zip archive: unzip it first";
  if (start.starts_with("\xff\xfe") || start.starts_with("\xfe\xff")) {
    return "is UTF-16: convert it to UTF-8 first";
  }
  return "";
}

}  // namespace

std::string ReadLines(const Input& input,
                      const std::function<void(std::string_view line)>& on_line) try {
  LineReader lines(input);
  const auto is_damaged = [&] {
    return lines.end() == LineEnd::kCut || lines.end() == LineEnd::kDamaged;
  };
  while (lines.Next() && !is_damaged()) {
    std::string_view line = lines.line();
    if (lines.number() == 1) {
      if (std::string why = WhyNoText(line); !why.empty()) return why;
      if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
    }
    while (line.ends_with('\r')) line.remove_suffix(1);
    on_line(line);
  }
  return is_damaged() ? "its gzip data is cut or damaged" : "";
} catch (const std::system_error& error) {
  return error.code().message();
}

}  // namespace sensorvela::tools
