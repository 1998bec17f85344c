// The characters of a text in UTF-8.
#pragma once

#include <bit>
#include <cstddef>
#include <optional>
#include <string_view>

namespace sensorvela::trace_format {

struct Character {
  char32_t code_point;
  std::size_t bytes;
};

/// Whether the byte belongs to a character that begins before it.
constexpr bool ContinuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// The first character of `text`, which is not empty; none if it does not begin with one. There are
/// no overlong forms, no surrogates, and nothing beyond U+10FFFF.
constexpr std::optional<Character> FirstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return Character{lead, 1};
  const auto bytes = static_cast<std::size_t>(std::countl_one(lead));
  if (bytes < 2 || bytes > 4 || text.size() < bytes) return std::nullopt;
  char32_t code_point = lead & (0x7FU >> bytes);
  for (const char byte : text.substr(1, bytes - 1)) {
    if (!ContinuesCharacter(byte)) return std::nullopt;
    code_point = code_point << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  constexpr char32_t kSmallest[] = {0x80, 0x800, 0x10000};
  const bool is_surrogate = code_point >= 0xD800 && code_point < 0xE000;
  if (code_point < kSmallest[bytes - 2] || code_point > 0x10FFFF || is_surrogate) {
    return std::nullopt;
  }
  return Character{code_point, bytes};
}

/// `text`, or as many of its first characters as fit into `max_bytes`.
constexpr std::string_view Cut(std::string_view text, std::size_t max_bytes) {
  if (text.size() <= max_bytes) return text;
  while (max_bytes > 0 && ContinuesCharacter(text[max_bytes])) --max_bytes;
  return text.substr(0, max_bytes);
}

}  // namespace sensorvela::trace_format
