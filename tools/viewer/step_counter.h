// A counter in the viewer's file, drawn as steps.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "tools/viewer/viewer_writer.h"

namespace sensorvela::tools {

/// Writes only the last value of each instant, and no value twice in a row.
class StepCounter {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` must outlive the counter.
  StepCounter(ViewerWriter& out, int process, std::string name)
      : out_(out), process_(process), name_(std::move(name)) {}

  void Set(Instant at, std::uint64_t value) {
    if (at != at_) Flush();
    at_ = at;
    value_ = value;
  }

  /// Writes the last value, if it has not been written. Call this at the end.
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

}  // namespace sensorvela::tools
