#include "tools/input/text_stream.h"

namespace sensorvela::replay {

std::size_t TextStream::Read(std::span<char> buffer) {
  const std::size_t count = input_.ReadAt(bytes_read_, buffer);
  bytes_read_ += count;
  return count;
}

}  // namespace sensorvela::replay
