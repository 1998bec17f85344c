// A file that reports write to.
#pragma once

#include <atomic>
#include <cstdio>
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
  explicit OutputFile(const std::string& path);

  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::ostream& stream() { return stream_; }

  /// Writes what is buffered.
  void Flush();

  /// The `errno` of the first write that failed, or of the opening; 0 for none.
  int error() const { return error_; }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int overflow(int character) override;
  void Check(bool is_written);

  std::unique_ptr<std::FILE, Close> opened_;
  std::FILE* const file_;
  std::ostream stream_;
  std::atomic<int> error_ = 0;
};

}  // namespace sensorvela::tools
