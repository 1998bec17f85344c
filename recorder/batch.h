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

  /// How much a batch holds. A recording has two: 3.6 MiB in all.
  struct Limits {
    std::size_t samples = 49'152;
    std::size_t lines = 4'096;
    /// From so many bytes on it is half full. It has room for a line of any allowed length more.
    std::size_t half_text_bytes = 262'144;
    std::size_t line_bytes = kMaxLineBytes;
  };

  explicit Batch(const Limits& limits) : limits_(limits) {
    samples_.reserve(limits.samples);
    lines_.reserve(limits.lines);
    text_.reserve(MaxTextBytes());
  }

  // Return false, and add nothing, if there is no room.

  bool Add(const trace_format::Sample& sample) {
    if (samples_.size() == limits_.samples) return false;
    samples_.push_back(sample);
    return true;
  }

  bool Add(std::string_view line) {
    if (!CanHold(line) || lines_.size() == limits_.lines ||
        text_.size() + line.size() > MaxTextBytes()) {
      return false;
    }
    text_ += line;
    lines_.push_back({samples_.size(), text_.size()});
    return true;
  }

  /// Whether an empty batch has room for it.
  bool CanHold(const trace_format::Sample& /*sample*/) const { return true; }
  bool CanHold(std::string_view line) const { return line.size() <= limits_.line_bytes; }

  bool IsEmpty() const { return samples_.empty() && lines_.empty(); }

  bool IsHalfFull() const {
    return samples_.size() >= limits_.samples / 2 || lines_.size() >= limits_.lines / 2 ||
           text_.size() >= limits_.half_text_bytes;
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
  std::size_t MaxTextBytes() const { return limits_.half_text_bytes + limits_.line_bytes; }

  const Limits limits_;
  std::vector<trace_format::Sample> samples_;
  std::vector<Line> lines_;
  std::string text_;
};

}  // namespace sensorvela::recorder
