// Reads the text of an input once, from its start to its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "tools/input/input.h"

struct z_stream_s;

namespace sensorvela::tools {

/// How a text ends.
enum class TextEnd {
  kWhole,
  /// Its gzip data ends too early.
  kCut,
  /// Its gzip data is damaged.
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
  TextEnd end() const { return end_.value_or(TextEnd::kWhole); }

  /// The number of the input's bytes that have been read.
  std::uint64_t bytes_read() const { return bytes_read_; }

 private:
  struct EndInflation {
    void operator()(z_stream_s* zlib) const;
  };

  std::size_t ReadInput(std::span<char> buffer);
  /// The first read, which finds out whether the input is gzip data.
  std::size_t ReadStart(std::span<char> buffer);

  // For gzip data.
  std::size_t ReadInflated(std::span<char> buffer);
  void Inflate();

  Input input_;
  std::uint64_t bytes_read_ = 0;

  /// Null for a plain text, and before the first read.
  std::unique_ptr<z_stream_s, EndInflation> zlib_;
  /// What zlib takes its input from.
  std::vector<char> chunk_;
  bool is_between_members_ = false;
  std::optional<TextEnd> end_;
};

}  // namespace sensorvela::tools
