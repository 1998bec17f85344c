#include "tools/log/read_lines.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "tools/input/line_reader.h"

namespace sensorvela::tools {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

constexpr char kIsNoText[] = "is no text";

/// The first bytes of data that is no text. Such data may also follow a text: files that were put
/// together as they are. `?` is any byte.
struct NoText {
  std::string_view start;
  std::string_view what;
};
constexpr NoText kNoTexts[] = {
    {"PK\x03\x04", "a zip archive"},   {"BZh?1AY&SY", "bzip2 data"},
    {{"\xfd\x37zXZ\0", 6}, "xz data"}, {"\x28\xb5\x2f\xfd", "zstd data"},
    {"\x1f\x8b\x08", "gzip data"},
};

bool StartsLike(std::string_view line, std::string_view start) {
  return std::ranges::equal(line.substr(0, start.size()), start,
                            [](char c, char wanted) { return wanted == '?' || c == wanted; });
}

/// Tells a text from other data by its first bytes.
class TextCheck {
 public:
  void Add(std::string_view line) {
    if (HasEnough()) return;
    line = line.substr(0, kEnoughBytes);
    bytes_ += line.size() + 1;
    control_characters_ += static_cast<std::size_t>(std::ranges::count_if(line, IsInNoText));
  }

  bool HasEnough() const { return bytes_ >= kEnoughBytes; }

  /// Of random bytes one in eleven is a control character that no text has.
  bool IsText() const { return control_characters_ * 32 <= bytes_; }

 private:
  static constexpr std::size_t kEnoughBytes = 4096;

  static bool IsInNoText(char c) {
    return static_cast<unsigned char>(c) < ' ' && (c < '\a' || c > '\r') && c != '\x1b';
  }

  std::size_t bytes_ = 0;
  std::size_t control_characters_ = 0;
};

/// Why the present line is no text; empty if it is one.
std::string WhyNoText(const LineReader& lines, TextCheck& check) {
  const std::string_view line = lines.line();
  const bool is_first = lines.number() == 1;
  if (is_first && (line.starts_with("\xff\xfe") || line.starts_with("\xfe\xff"))) {
    return "is UTF-16: convert it to UTF-8 first";
  }
  for (const NoText& no_text : kNoTexts) {
    if (!StartsLike(line, no_text.start)) continue;
    std::string where =
        is_first ? "is " : "from line " + std::to_string(lines.number()) + " on is ";
    return where.append(no_text.what) + ": decompress it first";
  }
  check.Add(line);
  return check.HasEnough() && !check.IsText() ? kIsNoText : "";
}

}  // namespace

std::string ReadLines(const Input& input,
                      const std::function<void(std::string_view line)>& on_line) try {
  LineReader lines(input);
  TextCheck check;
  const auto is_damaged = [&] {
    return lines.end() == LineEnd::kCut || lines.end() == LineEnd::kDamaged;
  };
  while (lines.Next() && !is_damaged()) {
    if (std::string why = WhyNoText(lines, check); !why.empty()) return why;
    std::string_view line = lines.line();
    if (lines.number() == 1 && line.starts_with(kByteOrderMark)) {
      line.remove_prefix(kByteOrderMark.size());
    }
    while (line.ends_with('\r')) line.remove_suffix(1);
    on_line(line);
  }
  if (is_damaged()) return "its gzip data is cut or damaged, or something else follows it";
  return check.IsText() ? "" : kIsNoText;
} catch (const std::system_error& error) {
  return error.code().message();
}

}  // namespace sensorvela::tools
