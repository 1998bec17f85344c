#include "tools/input/line_reader.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr std::size_t kChunkBytes = 262'144;

}  // namespace

LineReader::LineReader(Input input) : text_(std::move(input)), buffer_(kChunkBytes) {}

bool LineReader::Next() {
  if (end_ == LineEnd::kTooLong) SkipLine();
  if (end_ != LineEnd::kNewline) return false;
  const auto left = [&] { return std::string_view(buffer_.data() + from_, to_ - from_); };
  std::size_t newline = left().find('\n');
  while (newline == std::string_view::npos && left().size() <= kMaxLineBytes) {
    const std::size_t searched = left().size();
    if (!Fill()) break;
    newline = left().find('\n', searched);
  }
  line_ = left().substr(0, newline);
  if (line_.size() > kMaxLineBytes) {
    line_ = line_.substr(0, kMaxLineBytes);
    end_ = LineEnd::kTooLong;
  } else if (newline != std::string_view::npos) {
    from_ += newline + 1;
  } else {
    end_ = text_.end();
  }
  if (line_.empty() && end_ == LineEnd::kEndOfText) return false;
  ++number_;
  return true;
}

bool LineReader::Fill() {
  std::copy(buffer_.data() + from_, buffer_.data() + to_, buffer_.data());
  to_ -= std::exchange(from_, 0);
  if (to_ > buffer_.size() / 2) buffer_.resize(2 * buffer_.size());
  const std::size_t count = text_.Read(std::span(buffer_).subspan(to_));
  to_ += count;
  return count > 0;
}

void LineReader::SkipLine() {
  do {
    const auto* const newline = std::find(buffer_.data() + from_, buffer_.data() + to_, '\n');
    from_ = static_cast<std::size_t>(newline - buffer_.data());
    if (from_ < to_) {
      ++from_;
      end_ = LineEnd::kNewline;
      return;
    }
  } while (Fill());
  end_ = text_.end();
}

}  // namespace sensorvela::tools
