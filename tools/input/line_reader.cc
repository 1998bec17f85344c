#include "tools/input/line_reader.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

namespace sensorvela::replay {
namespace {

constexpr std::size_t kChunkBytes = 262'144;

LineEnd EndOf(TextEnd end) {
  if (end == TextEnd::kCut) return LineEnd::kCut;
  return end == TextEnd::kDamaged ? LineEnd::kDamaged : LineEnd::kEndOfText;
}

}  // namespace

LineReader::LineReader(Input input) : text_(std::move(input)), buffer_(kChunkBytes) {}

bool LineReader::Next() {
  if (end_ != LineEnd::kNewline) return false;
  std::size_t searched = 0;
  do {
    const std::string_view left(buffer_.data() + from_, to_ - from_);
    if (const std::size_t newline = left.find('\n', searched); newline != std::string_view::npos) {
      line_ = left.substr(0, newline);
      from_ += newline + 1;
      ++number_;
      return true;
    }
    searched = left.size();
  } while (Fill());
  end_ = EndOf(text_.end());
  line_ = {buffer_.data() + from_, to_ - from_};
  if (line_.empty() && end_ == LineEnd::kEndOfText) return false;
  ++number_;
  return true;
}

bool LineReader::Fill() {
  std::copy(buffer_.data() + from_, buffer_.data() + to_, buffer_.data());
  to_ -= std::exchange(from_, 0);
  if (to_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
  const std::size_t count = text_.Read(std::span(buffer_).subspan(to_));
  to_ += count;
  return count > 0;
}

}  // namespace sensorvela::replay
