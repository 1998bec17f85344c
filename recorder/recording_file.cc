#include "recorder/recording_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace sensorvela::recorder {
namespace {

constexpr int kMaxNumber = 999;
constexpr unsigned kBufferBytes = 65536;
constexpr char kNotOurs[] = "the host has closed its file";

std::string ErrorText(int error) { return std::generic_category().message(error); }

/// `path` with "-`number`" before the extensions of the file's name.
std::string Numbered(const std::string& path, int number) {
  const std::size_t slash = path.rfind('/');
  const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
  std::string numbered = path;
  return numbered.insert(std::min(path.find('.', name + 1), path.size()),
                         "-" + std::to_string(number));
}

bool IsRegularFile(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::optional<std::string> RecordingFile::Create(const std::string& path) {
  // With these flags the system does not follow a link in the place of the file.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  std::string name = path;
  int descriptor = -1;
  for (int number = 2;; ++number) {
    descriptor = open(name.c_str(), kFlags, S_IRUSR | S_IWUSR);
    if (descriptor >= 0) break;
    const int error = errno;
    if (error != EEXIST) return ErrorText(error);
    if (!IsRegularFile(name)) return "what has this name is not a regular file";
    if (number > kMaxNumber) return "too many files have this name";
    name = Numbered(path, number);
  }
  const auto error = Open(descriptor, path.ends_with(".gz"));
  if (error && file_ == nullptr) close(descriptor);
  return error;
}

std::optional<std::string> RecordingFile::Open(int descriptor, bool is_compressed) {
  struct stat status = {};
  // Whatever the process's mask is, the owner can read the file.
  if (fchmod(descriptor, S_IRUSR | S_IWUSR) != 0 || fstat(descriptor, &status) != 0) {
    return ErrorText(errno);
  }
  descriptor_ = descriptor;
  device_ = status.st_dev;
  inode_ = status.st_ino;
  // T: written as it is, without compression.
  file_ = gzdopen(descriptor, is_compressed ? "wb1" : "wbT");
  if (file_ == nullptr || gzbuffer(file_, kBufferBytes) != 0) return ErrorText(ENOMEM);
  return std::nullopt;
}

std::optional<std::string> RecordingFile::Write(std::string_view text) {
  if (text.empty()) return std::nullopt;
  if (!IsOurs()) return kNotOurs;
  const int written = gzwrite(file_, text.data(), static_cast<unsigned>(text.size()));
  if (written > 0) return std::nullopt;
  return Error();
}

std::optional<std::string> RecordingFile::Flush() {
  if (!IsOurs()) return kNotOurs;
  if (gzflush(file_, Z_SYNC_FLUSH) == Z_OK) return std::nullopt;
  return Error();
}

std::optional<std::string> RecordingFile::Close() {
  if (file_ == nullptr) return std::nullopt;
  gzFile const file = std::exchange(file_, nullptr);
  // zlib would write to the host's file and close it. What zlib holds is given up.
  if (!IsOurs()) return kNotOurs;
  const int result = gzclose(file);
  if (result == Z_OK) return std::nullopt;
  return result == Z_ERRNO ? ErrorText(errno) : "zlib fails";
}

bool RecordingFile::IsOurs() const {
  struct stat status = {};
  return fstat(descriptor_, &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

std::string RecordingFile::Error() const {
  const int system_error = errno;
  int error = Z_OK;
  const char* const text = gzerror(file_, &error);
  return error == Z_ERRNO ? ErrorText(system_error) : std::string(text);
}

}  // namespace sensorvela::recorder
