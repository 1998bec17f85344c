#include "tools/input/text_stream.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <string_view>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr std::size_t kChunkBytes = 65'536;

constexpr std::string_view kGzipMagic = "\x1f\x8b";

/// Gives `bytes` to zlib, to read from or to write to.
void Give(std::span<char> bytes, Bytef*& next, uInt& available) {
  next = reinterpret_cast<Bytef*>(bytes.data());
  available = static_cast<uInt>(bytes.size());
}

}  // namespace

TextStream::TextStream(Input input) : input_(std::move(input)) {}

std::size_t TextStream::Read(std::span<char> buffer) {
  if (zlib_) return ReadInflated(buffer);
  const bool starts = bytes_read_ == 0;
  std::size_t count = ReadInput(buffer);
  if (starts && count == 1) count += ReadInput(buffer.subspan(1));  // A pipe may give one byte.
  if (!starts || !std::string_view(buffer.data(), count).starts_with(kGzipMagic)) return count;
  chunk_.resize(std::max(kChunkBytes, count));
  std::ranges::copy(buffer.first(count), chunk_.begin());
  zlib_ = {new z_stream(), [](z_stream* zlib) {
             inflateEnd(zlib);
             delete zlib;
           }};
  Give(std::span(chunk_).first(count), zlib_->next_in, zlib_->avail_in);
  constexpr int kGzipOnly = 16;
  if (inflateInit2(zlib_.get(), kGzipOnly + MAX_WBITS) != Z_OK) throw std::bad_alloc();
  return ReadInflated(buffer);
}

std::size_t TextStream::ReadInput(std::span<char> buffer) {
  const std::size_t count = input_.ReadAt(bytes_read_, buffer);
  bytes_read_ += count;
  return count;
}

std::size_t TextStream::ReadInflated(std::span<char> buffer) {
  Give(buffer, zlib_->next_out, zlib_->avail_out);
  while (zlib_->avail_out == buffer.size() && !end_) {
    if (zlib_->avail_in == 0) {
      const std::size_t count = ReadInput(chunk_);
      Give(std::span(chunk_).first(count), zlib_->next_in, zlib_->avail_in);
      if (count == 0) end_ = is_between_members_ ? LineEnd::kEndOfText : LineEnd::kCut;
    }
    // Zeros may follow a member, as where a file was copied in blocks.
    for (; is_between_members_ && zlib_->avail_in > 0 && *zlib_->next_in == 0; --zlib_->avail_in) {
      ++zlib_->next_in;
    }
    if (zlib_->avail_in > 0) Inflate();
  }
  return buffer.size() - zlib_->avail_out;
}

void TextStream::Inflate() {
  is_between_members_ = false;
  const int result = inflate(zlib_.get(), Z_NO_FLUSH);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  if (result == Z_STREAM_END) {
    is_between_members_ = true;
    inflateReset(zlib_.get());
  } else if (result != Z_OK && result != Z_BUF_ERROR) {
    end_ = LineEnd::kDamaged;
  }
}

}  // namespace sensorvela::tools
