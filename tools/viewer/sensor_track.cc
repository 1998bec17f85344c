#include "tools/viewer/sensor_track.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace sensorvela::replay {
namespace {

constexpr ViewerWriter::Instant kMinute = std::chrono::minutes(1);

}  // namespace

SensorTrack::SensorTrack(ViewerWriter& out, const std::string& label, Track track)
    : out_(out),
      track_(track),
      samples_per_minute_(out, track.process, label + ": samples per minute") {
  out_.NameTrack(track_, label);
}

void SensorTrack::Enable(Instant at, std::int64_t period_ns) {
  WriteStretch(at);
  enabled_at_ = at;
  period_ns_ = period_ns;
  samples_ = 0;
}

void SensorTrack::Disable(Instant at) {
  WriteStretch(at);
  out_.Mark(track_, at, "sensor", "disabled", {{"samples_since_enable", samples_}});
}

void SensorTrack::Sample(Instant at) {
  if (samples_++ == 0) first_sample_at_ = at;
  if (at >= minute_ + kMinute) {
    EndMinute(at);
    minute_ = at - at % kMinute;
  }
  ++samples_in_minute_;
}

void SensorTrack::Finish(Instant at) {
  WriteStretch(at);
  EndMinute(at);
  samples_per_minute_.Flush();
}

void SensorTrack::WriteStretch(Instant at) {
  if (enabled_at_) {
    out_.Span(track_, *enabled_at_, at, "enabled",
              {{"sampling_period_ns", period_ns_}, {"samples", samples_}});
  }
  if (first_sample_at_) {
    out_.Mark(track_, *first_sample_at_, "sensor", "first sample", Json::object());
  }
  enabled_at_.reset();
  first_sample_at_.reset();
}

void SensorTrack::EndMinute(Instant next) {
  if (samples_in_minute_ == 0) return;
  samples_per_minute_.Set(minute_, std::exchange(samples_in_minute_, 0));
  if (next >= minute_ + kMinute) samples_per_minute_.Set(minute_ + kMinute, 0);
}

}  // namespace sensorvela::replay
