// Reads the lines of an input, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/input/input.h"
#include "tools/input/text_stream.h"

namespace sensorvela::tools {

/// The most that is given of a line. No line of a recording is longer.
inline constexpr std::size_t kMaxLineBytes = std::size_t{1} << 20;

/// Holds a chunk of the text, or one line where that is longer.
class LineReader {
 public:
  explicit LineReader(Input input);

  /// Goes on to the next line; false if there is none. Throws `std::system_error` if the file
  /// cannot be read.
  bool Next();

  /// The present line without its end, valid until the next call of `Next`.
  std::string_view line() const { return line_; }

  /// The number of the present line, from 1.
  std::size_t number() const { return number_; }

  /// How the present line ends. The last one may be a part of what was to be written if it does not
  /// end with a newline.
  LineEnd end() const { return end_; }

  /// The number of the input's bytes that have been read: those of the lines so far, and a little
  /// more.
  std::uint64_t bytes_read() const { return text_.bytes_read(); }

 private:
  /// Appends more of the text to what is left in the buffer; false at the end.
  bool Fill();
  /// Goes on to the start of the next line.
  void SkipLine();

  TextStream text_;
  std::vector<char> buffer_;
  // What is left in the buffer.
  std::size_t from_ = 0;
  std::size_t to_ = 0;

  std::string_view line_;
  std::size_t number_ = 0;
  LineEnd end_ = LineEnd::kNewline;
};

}  // namespace sensorvela::tools
