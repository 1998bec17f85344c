// A counter of a trace that a viewer draws as steps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "tools/viewer/viewer_writer.h"

namespace sensorvela::replay {

/// A counter of which only the last value of an instant is written, and no value twice in a row.
class StepCounter {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` outlives it.
  StepCounter(ViewerWriter& out, int process, std::string name)
      : out_(out), process_(process), name_(std::move(name)) {}

  void Set(Instant at, std::uint64_t value) {
    if (at != at_) Flush();
    at_ = at;
    value_ = value;
  }

  /// Writes the value that is left, if any. To be called at the end.
  void Flush() {
    if (value_ && value_ != written_) out_.Counter(process_, at_, name_, *value_);
    written_ = value_;
  }

 private:
  ViewerWriter& out_;
  const int process_;
  const std::string name_;
  Instant at_ = {};
  std::optional<std::uint64_t> value_;
  std::optional<std::uint64_t> written_;
};

}  // namespace sensorvela::replay
