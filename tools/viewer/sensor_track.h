// One sensor's track in the viewer's file.
#pragma once

#include <cstdint>
#include <string>

#include "tools/facts/sensor_facts.h"
#include "tools/viewer/step_counter.h"
#include "tools/viewer/viewer_writer.h"

namespace sensorvela::tools {

/// Writes the spans in which the sensor was enabled, its first samples, and the number of samples
/// in each minute. The calls must be in the order of time.
class SensorTrack {
 public:
  using Instant = ViewerWriter::Instant;

  /// `out` must outlive the track, which has the sensor's label as its name.
  SensorTrack(ViewerWriter& out, const std::string& label, Track track);

  void Disable(Instant at, std::uint64_t samples_since_enable);
  void Sample(Instant at);

  /// Writes a span and then the first sample in it: in the order of their starts.
  void WriteSpan(const SensorSpan& span);

  /// Writes what is left. Must be the last call.
  void Finish(Instant at);

 private:
  /// Writes the number of samples in the present minute. The next sample arrives, or the run ends,
  /// at `next`.
  void EndMinute(Instant next);

  ViewerWriter& out_;
  const Track track_;
  StepCounter samples_per_minute_;
  Instant minute_ = {};
  std::uint64_t samples_in_minute_ = 0;
};

}  // namespace sensorvela::tools
