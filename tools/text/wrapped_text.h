// Breaks text into lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sensorvela::replay {

/// `text` in lines of at most `width` characters, broken at spaces; a longer word has a line of its
/// own. Every line but the first begins with `indent` spaces, and every line ends with a line feed.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace sensorvela::replay
