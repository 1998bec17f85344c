// Cuts texts, which bounds the picture's size.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "trace_format/utf8.h"

namespace sensorvela::tools {

/// `text`, or its first 400 bytes or so and " ..." if it is longer. Does not cut a character of
/// UTF-8 in two.
inline std::string ShortText(std::string_view text) {
  constexpr std::size_t kMaxBytes = 400;
  const std::string_view part = trace_format::Cut(text, kMaxBytes);
  return std::string(part) + (part == text ? "" : " ...");
}

}  // namespace sensorvela::tools
