// Breaks text into lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sensorvela::tools {

/// The columns of a text in UTF-8 on a terminal that gives each character one.
std::size_t Columns(std::string_view text);

/// `text` without the spaces at its end.
std::string WithoutEnd(std::string_view text);

/// `text` in lines of at most `width` columns, broken at spaces; a longer word has a line of its
/// own. The first line begins after `taken` columns, every other with `indent` spaces, and each
/// ends with a line feed.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent,
                    std::size_t taken = 0);

}  // namespace sensorvela::tools
