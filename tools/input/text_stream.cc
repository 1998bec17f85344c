#include "tools/input/text_stream.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace sensorvela::tools {
namespace {

constexpr std::size_t kChunkBytes = 65'536;

constexpr std::string_view kGzipMagic = "\x1f\x8b";

}  // namespace

/// Inflates gzip data, a chunk at a time.
class TextStream::Inflater {
 public:
  /// `start` has the first bytes of the data.
  explicit Inflater(std::span<const char> start) : chunk_(std::max(kChunkBytes, start.size())) {
    std::ranges::copy(start, chunk_.begin());
    Bytes(std::span(chunk_).first(start.size()), zlib_.next_in, zlib_.avail_in);
    constexpr int kGzipOnly = 16;
    if (inflateInit2(&zlib_, kGzipOnly + MAX_WBITS) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { inflateEnd(&zlib_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// Like the stream's `Read`.
  std::size_t Read(TextStream& from, std::span<char> buffer) {
    Bytes(buffer, zlib_.next_out, zlib_.avail_out);
    while (zlib_.avail_out == buffer.size() && !has_ended_) {
      if (zlib_.avail_in == 0) {
        const std::size_t count = from.ReadInput(chunk_);
        Bytes(std::span(chunk_).first(count), zlib_.next_in, zlib_.avail_in);
        if (count == 0) End(from, is_between_members_ ? TextEnd::kWhole : TextEnd::kCut);
      }
      if (is_between_members_) SkipPadding();
      if (!has_ended_ && zlib_.avail_in > 0) Step(from);
    }
    return buffer.size() - zlib_.avail_out;
  }

 private:
  static void Bytes(std::span<char> bytes, Bytef*& next, uInt& available) {
    next = reinterpret_cast<Bytef*>(bytes.data());
    available = static_cast<uInt>(bytes.size());
  }

  /// Zeros may follow a member, as where a file was copied in blocks.
  void SkipPadding() {
    for (; zlib_.avail_in > 0 && *zlib_.next_in == 0; --zlib_.avail_in) ++zlib_.next_in;
  }

  void Step(TextStream& from) {
    is_between_members_ = false;
    const int result = inflate(&zlib_, Z_NO_FLUSH);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_STREAM_END) {
      is_between_members_ = true;
      inflateReset(&zlib_);
    } else if (result != Z_OK && result != Z_BUF_ERROR) {
      End(from, TextEnd::kDamaged);
    }
  }

  void End(TextStream& from, TextEnd end) {
    has_ended_ = true;
    from.end_ = end;
  }

  std::vector<char> chunk_;
  z_stream zlib_ = {};
  bool is_between_members_ = false;
  bool has_ended_ = false;
};

TextStream::TextStream(Input input) : input_(std::move(input)) {}

TextStream::~TextStream() = default;

std::size_t TextStream::Read(std::span<char> buffer) {
  if (!std::exchange(has_begun_, true)) return ReadStart(buffer);
  return inflater_ ? inflater_->Read(*this, buffer) : ReadInput(buffer);
}

std::size_t TextStream::ReadStart(std::span<char> buffer) {
  std::size_t count = ReadInput(buffer);
  if (count == 1) count += ReadInput(buffer.subspan(1));  // A pipe may give one byte.
  if (!std::string_view(buffer.data(), count).starts_with(kGzipMagic)) return count;
  inflater_ = std::make_unique<Inflater>(buffer.first(count));
  return inflater_->Read(*this, buffer);
}

std::size_t TextStream::ReadInput(std::span<char> buffer) {
  const std::size_t count = input_.ReadAt(bytes_read_, buffer);
  bytes_read_ += count;
  return count;
}

}  // namespace sensorvela::tools
