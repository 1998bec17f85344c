#include "tools/text/printable_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "trace_format/utf8.h"

namespace sensorvela::tools {
namespace {

constexpr std::size_t kMaxQuotedBytes = 60;

struct Range {
  char32_t first;
  char32_t last;
};

/// Controls, line separators, and the invisible characters that change the direction, the order or
/// the look of those around them.
constexpr Range kUnprintable[] = {{0, 0x1f},        {0x7f, 0x9f},      {0xad, 0xad},
                                  {0x61c, 0x61c},   {0x180e, 0x180e},  {0x200b, 0x200f},
                                  {0x2028, 0x202e}, {0x2060, 0x206f},  {0xfeff, 0xfeff},
                                  {0xfff9, 0xfffb}, {0xe0000, 0xe007f}};

bool IsPrintable(char32_t code_point) {
  return std::ranges::none_of(kUnprintable, [=](const Range& range) {
    return range.first <= code_point && code_point <= range.last;
  });
}

std::string Formatted(const char* format, unsigned number) {
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), format, number);
  return text.data();
}

/// As in JSON.
std::string Escaped(char32_t code_point) {
  if (code_point == '\n') return "\\n";
  if (code_point == '\t') return "\\t";
  if (code_point < 0x10000) return Formatted("\\u%04x", code_point);
  return Formatted("\\u%04x", 0xd7c0 + (code_point >> 10)) +
         Formatted("\\u%04x", 0xdc00 + (code_point & 0x3ff));
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto character = trace_format::FirstCharacter(text);
    const std::size_t bytes = character ? character->bytes : 1;
    if (!character) {
      result += Formatted("\\x%02x", static_cast<unsigned char>(text[0]));
    } else if (IsPrintable(character->code_point)) {
      result += text.substr(0, bytes);
    } else {
      result += Escaped(character->code_point);
    }
    text.remove_prefix(bytes);
  }
  return result;
}

std::string Quoted(std::string_view text) {
  const std::string_view part = trace_format::Cut(text, kMaxQuotedBytes);
  return '"' + Printable(part) + (part == text ? "\"" : "...\"");
}

}  // namespace sensorvela::tools
