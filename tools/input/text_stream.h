// Reads the text of an input once, from its start to its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "tools/input/input.h"

namespace sensorvela::replay {

class TextStream {
 public:
  explicit TextStream(Input input) : input_(std::move(input)) {}

  /// Copies the next bytes of the text into `buffer`, which must not be empty, and returns their
  /// number; 0 means the end. Throws `std::system_error` if the file cannot be read.
  std::size_t Read(std::span<char> buffer);

  /// The number of the input's bytes that have been read.
  std::uint64_t bytes_read() const { return bytes_read_; }

 private:
  Input input_;
  std::uint64_t bytes_read_ = 0;
};

}  // namespace sensorvela::replay
