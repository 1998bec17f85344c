#include "tools/text/printable_text.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace sensorvela::replay {
namespace {

constexpr std::size_t kMaxQuotedBytes = 60;

std::string Escaped(unsigned code_point) {
  if (code_point == '\n') return "\\n";
  if (code_point == '\t') return "\\t";
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "\\u%04x", code_point);
  return text.data();
}

bool ContinuesUtf8(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

}  // namespace

std::string Printable(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0u;
    if (byte < 0x20 || byte == 0x7f) {
      result += Escaped(byte);
    } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {  // U+0080 to U+009F in UTF-8.
      result += Escaped(next);
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string Quoted(std::string_view text) {
  if (text.size() <= kMaxQuotedBytes) return '"' + Printable(text) + '"';
  std::size_t end = kMaxQuotedBytes;
  while (end > 0 && ContinuesUtf8(text[end])) --end;
  return '"' + Printable(text.substr(0, end)) + "...\"";
}

}  // namespace sensorvela::replay
