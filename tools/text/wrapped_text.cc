#include "tools/text/wrapped_text.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace sensorvela::replay {

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent) {
  std::string lines;
  while (text.size() > width) {
    std::size_t space = text.rfind(' ', width);
    if (space == std::string_view::npos) space = text.find(' ');
    if (space == std::string_view::npos) break;
    lines += std::string(text.substr(0, space)) + '\n' + std::string(indent, ' ');
    text.remove_prefix(space + 1);
  }
  return lines + std::string(text) + '\n';
}

}  // namespace sensorvela::replay
