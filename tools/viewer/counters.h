// The counters in the viewer's file.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "tools/viewer/viewer_writer.h"

namespace sensorvela::tools {

/// A value that is drawn as steps. Writes only the last value of each instant, and no value twice
/// in a row.
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

/// How often something happens in each minute. The calls must be in the order of time.
class MinuteCounter {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` must outlive the counter.
  MinuteCounter(ViewerWriter& out, int process, std::string name)
      : steps_(out, process, std::move(name)) {}

  void Count(Instant at) {
    if (at >= minute_ + kMinute) {
      EndMinute(at);
      minute_ = at - at % kMinute;
    }
    ++count_;
  }

  /// Writes what is left. Must be the last call.
  void Finish(Instant at) {
    EndMinute(at);
    steps_.Flush();
  }

 private:
  static constexpr Instant kMinute = std::chrono::minutes(1);

  /// What comes after the present minute comes at `next`.
  void EndMinute(Instant next) {
    if (count_ == 0) return;
    steps_.Set(minute_, std::exchange(count_, 0));
    if (next >= minute_ + kMinute) steps_.Set(minute_ + kMinute, 0);
  }

  StepCounter steps_;
  Instant minute_ = {};
  std::uint64_t count_ = 0;
};

}  // namespace sensorvela::tools
