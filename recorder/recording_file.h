// The file that a recording is written to.
#pragma once

#include <sys/types.h>
#include <zlib.h>

#include <optional>
#include <string>
#include <string_view>

namespace sensorvela::recorder {

/// Compressed if its name ends in ".gz". Used by one thread.
///
/// A host may close every descriptor that it does not know, and open files of its own, which get
/// the same numbers. So each write looks whether the descriptor is still that of the file.
class RecordingFile {
 public:
  RecordingFile() = default;
  ~RecordingFile() { Close(); }
  RecordingFile(const RecordingFile&) = delete;
  RecordingFile& operator=(const RecordingFile&) = delete;

  // Each of these returns what is wrong, or nothing.

  /// Creates the file, readable and writable by its owner alone. A file that exists is left as it
  /// is: if it is a regular file, the new one is named with "-2", "-3", ... before its extensions;
  /// anything else, a link too, is an error.
  std::optional<std::string> Create(const std::string& path);
  std::optional<std::string> Write(std::string_view text);
  /// Hands everything that has been written to the system.
  std::optional<std::string> Flush();
  std::optional<std::string> Close();

 private:
  std::optional<std::string> Open(int descriptor, bool is_compressed);
  /// The descriptor is still that of the file.
  bool IsOurs() const;
  std::string Error() const;

  gzFile file_ = nullptr;
  int descriptor_ = -1;
  // Which file it is.
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace sensorvela::recorder
