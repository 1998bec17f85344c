// The bytes of a trace or a log: those of a file, of standard input, or of a text in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace sensorvela::tools {

/// Copies share the file.
class Input {
 public:
  /// Opens the file at `path`, or standard input for "-", which begins where it stands. It may be
  /// read more than once: a regular file is read anew each time, and the bytes of a pipe or another
  /// file that cannot be read twice are kept. Throws `std::system_error` if the opening or, for
  /// what is kept, the reading fails.
  static Input Open(const std::string& path);

  /// The same for an input that is read once, from its start to its end. Keeps nothing: `ReadAt`
  /// then gives the next bytes, whatever the offset.
  static Input OpenOnce(const std::string& path);

  explicit Input(std::string text) : text_(std::make_shared<const std::string>(std::move(text))) {}

  /// The number of bytes; that of a regular file may change later. 0 after `OpenOnce`.
  std::size_t size() const { return text_ ? text_->size() : size_; }

  /// Copies the bytes from `offset` on into `buffer`, which must not be empty, and returns their
  /// number; 0 means the end. Throws `std::system_error` if the file cannot be read.
  std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) const;

 private:
  /// Set when the bytes are kept.
  std::shared_ptr<const std::string> text_;

  // A file.
  std::shared_ptr<const int> descriptor_;
  bool reads_once_ = false;
  std::uint64_t start_ = 0;
  std::size_t size_ = 0;

  Input() = default;
};

}  // namespace sensorvela::tools
