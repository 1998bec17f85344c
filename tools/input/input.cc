#include "tools/input/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <system_error>

namespace sensorvela::tools {
namespace {

[[noreturn]] void ThrowErrno() { throw std::system_error(errno, std::generic_category()); }

std::shared_ptr<const int> OpenDescriptor(const std::string& path) {
  if (path == "-") return std::make_shared<const int>(STDIN_FILENO);
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) ThrowErrno();
  return {new int(descriptor), [](const int* opened) {
            close(*opened);
            delete opened;
          }};
}

std::string ReadAll(const Input& input) {
  std::string text;
  std::array<char, 65536> chunk;
  for (;;) {
    const std::size_t count = input.ReadAt(0, chunk);
    if (count == 0) return text;
    text.append(chunk.data(), count);
  }
}

}  // namespace

Input Input::Open(const std::string& path) {
  Input input = OpenOnce(path);
  struct stat status = {};
  if (fstat(*input.descriptor_, &status) != 0) ThrowErrno();
  if (!S_ISREG(status.st_mode)) return Input(ReadAll(input));
  const off_t start = lseek(*input.descriptor_, 0, SEEK_CUR);
  if (start < 0) ThrowErrno();
  input.reads_once_ = false;
  input.start_ = static_cast<std::uint64_t>(start);
  input.size_ = static_cast<std::size_t>(std::max<off_t>(status.st_size - start, 0));
  return input;
}

Input Input::OpenOnce(const std::string& path) {
  Input input;
  input.descriptor_ = OpenDescriptor(path);
  input.reads_once_ = true;
  return input;
}

std::size_t Input::ReadAt(std::uint64_t offset, std::span<char> buffer) const {
  if (text_ != nullptr) {
    if (offset >= text_->size()) return 0;
    return text_->copy(buffer.data(), buffer.size(), static_cast<std::size_t>(offset));
  }
  const auto from = static_cast<off_t>(start_ + offset);
  for (;;) {
    const ssize_t count = reads_once_ ? read(*descriptor_, buffer.data(), buffer.size())
                                      : pread(*descriptor_, buffer.data(), buffer.size(), from);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) ThrowErrno();
  }
}

}  // namespace sensorvela::tools
