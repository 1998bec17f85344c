#include "tools/viewer/sensor_track.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr ViewerWriter::Instant kMinute = std::chrono::minutes(1);

}  // namespace

SensorTrack::SensorTrack(ViewerWriter& out, const std::string& label, Track track)
    : out_(out),
      track_(track),
      samples_per_minute_(out, track.process, label + ": samples per minute") {
  out_.NameTrack(track_, label);
}

void SensorTrack::Disable(Instant at, std::uint64_t samples_since_enable) {
  out_.Mark(track_, at, "sensor", "disabled", {{"samples_since_enable", samples_since_enable}});
}

void SensorTrack::Sample(Instant at) {
  if (at >= minute_ + kMinute) {
    EndMinute(at);
    minute_ = at - at % kMinute;
  }
  ++samples_in_minute_;
}

void SensorTrack::WriteSpan(const SensorSpan& span) {
  if (span.enabled_at) {
    out_.Span(track_, *span.enabled_at, span.end, "enabled",
              {{"sampling_period_ns", span.period_ns}, {"samples", span.samples}});
  }
  if (span.first_sample) {
    out_.Mark(track_, span.first_sample->at, "sensor", "first sample", Json::object());
  }
}

void SensorTrack::Finish(Instant at) {
  EndMinute(at);
  samples_per_minute_.Flush();
}

void SensorTrack::EndMinute(Instant next) {
  if (samples_in_minute_ == 0) return;
  samples_per_minute_.Set(minute_, std::exchange(samples_in_minute_, 0));
  if (next >= minute_ + kMinute) samples_per_minute_.Set(minute_ + kMinute, 0);
}

}  // namespace sensorvela::tools
