#include "tools/report/output_file.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <ios>
#include <string>

namespace sensorvela::tools {

OutputFile::OutputFile(const std::string& path)
    : opened_(std::fopen(path.c_str(), "wb")), file_(opened_.get()), stream_(this) {
  Check(file_ != nullptr);
}

void OutputFile::Flush() {
  if (error_ == 0) Check(std::fflush(file_) == 0);
}

std::streamsize OutputFile::xsputn(const char* text, std::streamsize size) {
  if (error_ != 0) return 0;
  const auto bytes = static_cast<std::size_t>(size);
  Check(std::fwrite(text, 1, bytes, file_) == bytes);
  return size;
}

int OutputFile::overflow(int character) {
  const char byte = traits_type::to_char_type(character);
  return xsputn(&byte, 1) == 1 ? character : traits_type::eof();
}

void OutputFile::Check(bool is_written) {
  if (!is_written) error_ = errno;
}

}  // namespace sensorvela::tools
