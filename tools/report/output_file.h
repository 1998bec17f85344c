// A file that reports write to.
#pragma once

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <ios>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace sensorvela::tools {

/// Remembers the first write that failed. Everything after it is discarded.
///
/// One thread at a time writes; any thread may ask for the error.
class OutputFile : private std::streambuf {
 public:
  /// Writes to `file`, which must outlive this.
  explicit OutputFile(std::FILE* file) : file_(file), stream_(this) {}

  /// Creates or empties the file at `path`.
  explicit OutputFile(const std::string& path)
      : opened_(std::fopen(path.c_str(), "wb")), file_(opened_.get()), stream_(this) {
    Check(file_ != nullptr);
  }

  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::ostream& stream() { return stream_; }

  /// Writes what is buffered.
  void Flush() {
    if (error_ == 0) Check(std::fflush(file_) == 0);
  }

  /// The `errno` of the first write that failed, or of the opening; 0 for none.
  int error() const { return error_; }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::streamsize xsputn(const char* text, std::streamsize size) override {
    if (error_ != 0) return 0;
    const auto bytes = static_cast<std::size_t>(size);
    Check(std::fwrite(text, 1, bytes, file_) == bytes);
    return size;
  }

  int overflow(int character) override {
    const char byte = traits_type::to_char_type(character);
    return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
  }

  void Check(bool is_written) {
    if (!is_written) error_ = errno;
  }

  std::unique_ptr<std::FILE, Close> opened_;
  std::FILE* const file_;
  std::ostream stream_;
  std::atomic<int> error_ = 0;
};

}  // namespace sensorvela::tools
