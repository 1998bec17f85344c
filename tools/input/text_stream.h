// Reads the text of an input once, from its start to its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "tools/input/input.h"

struct z_stream_s;  // NOLINT(readability-identifier-naming): zlib's.

namespace sensorvela::tools {

/// How a line ends. A text ends as its last line does, in one of the last three ways.
enum class LineEnd {
  kNewline,
  /// The line is longer than the limit: what follows its first part has been skipped.
  kTooLong,
  /// The text ends without a newline.
  kEndOfText,
  /// The line has been cut, perhaps before its first byte: the input's gzip data ends too early.
  kCut,
  /// The same, because the gzip data is damaged there.
  kDamaged,
};

/// Inflates an input that begins as gzip data does; it may have several gzip members, one after the
/// other.
class TextStream {
 public:
  explicit TextStream(Input input);

  /// Copies the next bytes of the text into `buffer`, which has at least two, and returns their
  /// number; 0 means the end. What came before a cut or damage is given first. Throws
  /// `std::system_error` if the file cannot be read.
  std::size_t Read(std::span<char> buffer);

  /// How the text ends, once `Read` has returned 0.
  LineEnd end() const { return end_.value_or(LineEnd::kEndOfText); }

  /// The number of the input's bytes that have been read.
  std::uint64_t bytes_read() const { return bytes_read_; }

 private:
  std::size_t ReadInput(std::span<char> buffer);

  // For gzip data.
  std::size_t ReadInflated(std::span<char> buffer);
  void Inflate();

  Input input_;
  std::uint64_t bytes_read_ = 0;

  /// Null for a plain text, and before the first read.
  std::unique_ptr<z_stream_s, void (*)(z_stream_s*)> zlib_ = {nullptr, nullptr};
  /// What zlib takes its input from.
  std::vector<char> chunk_;
  bool is_between_members_ = false;
  std::optional<LineEnd> end_;
};

}  // namespace sensorvela::tools
