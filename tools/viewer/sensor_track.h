// One sensor's track in the viewer's file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/viewer/step_counter.h"
#include "tools/viewer/viewer_writer.h"

namespace sensorvela::replay {

/// Writes the spans in which the sensor was enabled, its first samples, and the number of samples
/// in each minute. The calls must be in the order of time.
class SensorTrack {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` must outlive the track, which has the sensor's label as its name.
  SensorTrack(ViewerWriter& out, const std::string& label, Track track);

  void Enable(Instant at, std::int64_t period_ns);
  void Disable(Instant at);
  void Sample(Instant at);

  /// Writes what is left. Must be the last call.
  void Finish(Instant at);

 private:
  /// Writes the present span, if any, which ends at `at`, and then the first sample in it: in the
  /// order of their starts.
  void WriteStretch(Instant at);

  /// Writes the number of samples in the present minute. The next sample arrives, or the run ends,
  /// at `next`.
  void EndMinute(Instant next);

  ViewerWriter& out_;
  const Track track_;
  StepCounter samples_per_minute_;
  Instant minute_ = {};
  std::uint64_t samples_in_minute_ = 0;
  /// None while the sensor is disabled.
  std::optional<Instant> enabled_at_;
  std::int64_t period_ns_ = 0;
  std::optional<Instant> first_sample_at_;
  std::uint64_t samples_ = 0;
};

}  // namespace sensorvela::replay
