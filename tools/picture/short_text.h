// Cuts texts, which bounds the picture's size.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sensorvela::replay {

/// `text`, or its first 400 bytes or so and " ..." if it is longer. Does not cut a character of
/// UTF-8 in two.
inline std::string ShortText(std::string_view text) {
  constexpr std::size_t kMaxBytes = 400;
  if (text.size() <= kMaxBytes) return std::string(text);
  std::size_t end = kMaxBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  return std::string(text.substr(0, end)) + " ...";
}

}  // namespace sensorvela::replay
