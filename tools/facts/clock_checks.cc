#include "tools/facts/clock_checks.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>

namespace sensorvela::tools {
namespace {

constexpr std::int64_t kMillisecondNs = 1'000'000;
constexpr std::int64_t kSecondNs = 1'000'000'000;
constexpr std::int64_t kTenYearsNs = std::int64_t{10} * 365 * 24 * 3600 * kSecondNs;

/// What a clock's latencies may differ by to be its own, and how long they must be so.
constexpr std::int64_t kSteadyNs = 100 * kMillisecondNs;

/// Whether timestamps would be right in that unit.
bool IsInUnit(std::int64_t at_ns, std::int64_t timestamp, std::int64_t unit_ns) {
  if (timestamp <= 0 || timestamp > at_ns / unit_ns + 1) return false;
  const std::int64_t latency_ns = at_ns - timestamp * unit_ns;
  return latency_ns >= -unit_ns && latency_ns <= std::min(kSecondNs, at_ns / 10);
}

}  // namespace

SampleClock ClockChecks::ClockOf(const Moment& moment, std::int64_t timestamp_ns,
                                 std::int64_t latency_ns) {
  const std::int64_t at_ns = moment.at.count();
  const std::int64_t asleep_ns = moment.asleep.count();
  if (latency_ns < -kTenYearsNs) return SampleClock::kWall;
  if (IsInUnit(at_ns, timestamp_ns, 1000)) return SampleClock::kMicroseconds;
  if (IsInUnit(at_ns, timestamp_ns, kMillisecondNs)) return SampleClock::kMilliseconds;
  if (asleep_ns >= kSecondNs && latency_ns >= asleep_ns - kToleranceNs &&
      latency_ns <= asleep_ns + kSecondNs) {
    return SampleClock::kMonotonic;
  }
  if (latency_ns < -kToleranceNs) return SampleClock::kAhead;
  return latency_ns > kSecondNs ? SampleClock::kBehind : SampleClock::kElapsedRealtime;
}

void ClockChecks::AddToStretch(SampleClock clock, const Moment& moment, std::int64_t latency_ns) {
  const bool may_vary = clock == SampleClock::kWall || clock == SampleClock::kMicroseconds ||
                        clock == SampleClock::kMilliseconds;
  if (stretch_ && stretch_->clock == clock &&
      (may_vary || std::abs(latency_ns - stretch_->latency_ns) <= kSteadyNs)) {
    ++stretch_->samples;
    stretch_->last = moment;
    return;
  }
  EndStretch();
  if (clock == SampleClock::kElapsedRealtime) return;
  stretch_ = {clock, latency_ns, moment, moment, 1};
}

void ClockChecks::EndStretch() {
  const std::optional<Stretch> stretch = std::exchange(stretch_, std::nullopt);
  if (!stretch) return;
  const std::optional<FindingKind> kind = KindOf(*stretch);
  if (kind) findings_.Add(*kind, sensor_, stretch->first, stretch->samples);
}

std::optional<FindingKind> ClockChecks::KindOf(const Stretch& stretch) {
  const bool is_several = stretch.samples >= 3;
  const bool lasts = (stretch.last.at - stretch.first.at).count() >= kSteadyNs;
  const bool is_offset = stretch.samples >= 5 && lasts;
  switch (stretch.clock) {
    case SampleClock::kElapsedRealtime:
      break;
    case SampleClock::kWall:
      return FindingKind::kWallClock;
    case SampleClock::kMonotonic:
      if (is_several && lasts) return FindingKind::kMonotonicClock;
      break;
    case SampleClock::kMicroseconds:
      if (is_several) return FindingKind::kMicroseconds;
      break;
    case SampleClock::kMilliseconds:
      if (is_several) return FindingKind::kMilliseconds;
      break;
    case SampleClock::kAhead:
      return is_offset ? FindingKind::kClockOffset : FindingKind::kTimestampsAhead;
    case SampleClock::kBehind:
      if (is_offset) return FindingKind::kClockOffset;
      break;
  }
  return std::nullopt;
}

}  // namespace sensorvela::tools
