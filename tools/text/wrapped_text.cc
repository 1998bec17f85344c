#include "tools/text/wrapped_text.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "trace_format/utf8.h"

namespace sensorvela::tools {

using trace_format::ContinuesCharacter;

namespace {

/// Where the character of that column begins, or the end of the text.
std::size_t IndexOf(std::size_t column, std::string_view text) {
  std::size_t index = 0;
  for (; index < text.size(); ++index) {
    if (ContinuesCharacter(text[index])) continue;
    if (column == 0) break;
    --column;
  }
  return index;
}

/// The space at which a line of at most `columns` ends; none if the text has no later word.
std::size_t LastSpace(std::string_view text, std::size_t columns) {
  const std::size_t word = std::min(text.find_first_not_of(' '), text.size());
  const std::size_t space = text.rfind(' ', IndexOf(columns, text));
  return space != std::string_view::npos && space > word ? space : text.find(' ', word);
}

}  // namespace

std::size_t Columns(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, ContinuesCharacter));
}

std::string WithoutEnd(std::string_view text) {
  return std::string(text.substr(0, text.find_last_not_of(' ') + 1));
}

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent,
                    std::size_t taken) {
  std::string lines;
  for (std::size_t before = taken;; before = indent) {
    const std::size_t columns = width - std::min(width, before);
    // Looks at no more of a long text than a line of it.
    const std::size_t space =
        IndexOf(columns, text) < text.size() ? LastSpace(text, columns) : std::string_view::npos;
    if (space == std::string_view::npos) return lines.append(text) + '\n';
    lines += WithoutEnd(text.substr(0, space)) + '\n' + std::string(indent, ' ');
    text.remove_prefix(std::min(text.find_first_not_of(' ', space), text.size()));
  }
}

}  // namespace sensorvela::tools
