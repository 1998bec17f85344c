// What a recording has taken in and not written yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recorder/event_line.h"
#include "trace_format/sample.h"

namespace sensorvela::recorder {

/// Samples and lines of other events, in order. Its memory is taken at the start and does not grow.
class Batch {
 public:
  struct Line {
    /// The number of samples that came before the line.
    std::size_t samples_before;
    /// Where the line ends in `text`, and the next one begins.
    std::size_t text_end;
  };

  Batch() {
    samples_.reserve(kMaxSamples);
    lines_.reserve(kMaxLines);
    text_.reserve(kMaxTextBytes);
  }

  // Return false, and add nothing, if there is no room.

  bool Add(const trace_format::Sample& sample) {
    if (samples_.size() == kMaxSamples) return false;
    samples_.push_back(sample);
    return true;
  }

  bool Add(std::string_view line) {
    if (!CanHold(line) || lines_.size() == kMaxLines ||
        text_.size() + line.size() > kMaxTextBytes) {
      return false;
    }
    text_ += line;
    lines_.push_back({samples_.size(), text_.size()});
    return true;
  }

  /// Whether an empty batch has room for it.
  static bool CanHold(const trace_format::Sample& /*sample*/) { return true; }
  static bool CanHold(std::string_view line) { return line.size() <= kMaxLineBytes; }

  bool IsEmpty() const { return samples_.empty() && lines_.empty(); }

  bool IsHalfFull() const {
    return samples_.size() >= kMaxSamples / 2 || lines_.size() >= kMaxLines / 2 ||
           text_.size() >= kHalfTextBytes;
  }

  void Clear() {
    samples_.clear();
    lines_.clear();
    text_.clear();
  }

  const std::vector<trace_format::Sample>& samples() const { return samples_; }
  const std::vector<Line>& lines() const { return lines_; }
  std::string_view text() const { return text_; }

 private:
  // A recording has two batches: 3.6 MiB in all. A batch that is not half full has room for a line
  // of any allowed length.
  static constexpr std::size_t kMaxSamples = 49'152;
  static constexpr std::size_t kMaxLines = 4'096;
  static constexpr std::size_t kHalfTextBytes = 262'144;
  static constexpr std::size_t kMaxTextBytes = kHalfTextBytes + kMaxLineBytes;

  std::vector<trace_format::Sample> samples_;
  std::vector<Line> lines_;
  std::string text_;
};

}  // namespace sensorvela::recorder
