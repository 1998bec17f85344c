// One sensor's row in a picture of a run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sensorvela/engine/sensor_vela.h>

#include "tools/viewer/step_counter.h"
#include "tools/viewer/viewer_writer.h"

namespace sensorvela::replay {

/// The stretches in which the sensor was enabled, its first samples, and how many samples came in
/// each minute. Calls come in the order of time.
class SensorTrack {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` outlives it.
  SensorTrack(ViewerWriter& out, SensorVela::SensorId sensor, Track track);

  void Enable(Instant at, std::int64_t period_ns);
  void Disable(Instant at);
  void Sample(Instant at);

  /// Writes what is left. Nothing comes after it.
  void Finish(Instant at);

 private:
  /// A span is written at its end, and what happened in it after it, in the order of time.
  void WriteStretch(Instant at);

  /// The next sample comes at `next`, or the run ends.
  void EndMinute(Instant next);

  ViewerWriter& out_;
  const Track track_;
  const std::string name_;
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
