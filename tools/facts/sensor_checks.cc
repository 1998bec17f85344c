#include "tools/facts/sensor_checks.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace sensorvela::tools {
namespace {

constexpr std::uint64_t kFewIntervals = 5;
constexpr std::uint64_t kFewSamples = 5;
constexpr std::int64_t kSecondNs = 1'000'000'000;
constexpr std::int64_t kSilentPeriods = 100;
constexpr double kPeriodJump = 500;
constexpr double kRateJump = 2;
constexpr double kLatencyJump = 5;
constexpr double kLatencyJumpNs = 20e6;

/// Whether the greater of both is at least so many times the other, which is above 0.
bool DifferBy(double factor, double a, double b) {
  const auto [least, greatest] = std::minmax(a, b);
  return least > 0 && greatest >= factor * least;
}

}  // namespace

void SensorChecks::Enable(const Moment& moment, std::int64_t period_ns) {
  if (is_enabled_) {
    findings_.Add(FindingKind::kReEnabled, sensor_, moment);
    EndSpan(moment);
  }
  if (period_ns < kLeastPeriodNs) findings_.Add(FindingKind::kBadPeriod, sensor_, moment);
  ++enables_;
  is_enabled_ = true;
  last_enable_ = moment;
  first_reports_ = 0;
  samples_since_enable_ = 0;
  span_ = {.period_ns = period_ns};
  fast_ns_ = period_ns / 22 * 10;
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  const bool is_in_range = period_ns >= 0 && period_ns <= kMax / 2;
  slow_ns_ = is_in_range ? period_ns + period_ns / 2 : kMax;
}

void SensorChecks::Disable(const Moment& moment) {
  if (is_enabled_) {
    EndSpan(moment);
  } else {
    findings_.Add(enables_ == 0 ? FindingKind::kDisabledNeverEnabled : FindingKind::kDisabledTwice,
                  sensor_, moment);
  }
  is_enabled_ = false;
  last_disable_ = moment;
}

void SensorChecks::Sample(const Moment& moment, std::int64_t timestamp_ns) {
  const SampleClock clock = clock_checks_.Sample(moment, timestamp_ns);
  if (!is_enabled_ || timestamp_ns < start_ns_) CheckState(moment, timestamp_ns, clock);
  if (samples_since_enable_++ == 0) {
    AddFirstReport(moment);
  } else if (clock == last_clock_) {
    const auto interval_ns = WrappingSubtract(timestamp_ns, last_timestamp_ns_);
    if (interval_ns < 0) findings_.Add(FindingKind::kTimestampsBack, sensor_, moment);
    if (is_enabled_) AddInterval(moment, interval_ns);
  }
  if (is_enabled_) {
    ++span_.samples;
    if (clock == SampleClock::kElapsedRealtime) AddLatency(moment.at.count() - timestamp_ns);
  }
  last_sample_ = moment;
  last_timestamp_ns_ = timestamp_ns;
  last_clock_ = clock;
}

void SensorChecks::End(const Moment& moment) {
  if (is_enabled_) EndSpan(moment);
  clock_checks_.End();
}

void SensorChecks::AddFirstReport(const Moment& moment) {
  if (++first_reports_ > 1) findings_.Add(FindingKind::kFirstSampleTwice, sensor_, moment);
}

void SensorChecks::CheckState(const Moment& moment, std::int64_t timestamp_ns, SampleClock clock) {
  const bool is_right = clock == SampleClock::kElapsedRealtime;
  if (enables_ == 0) {
    findings_.Add(FindingKind::kNeverEnabled, sensor_, moment);
  } else if (!is_enabled_) {
    // One that was taken before the disable is still on its way.
    const std::int64_t taken_ns = is_right ? timestamp_ns : moment.at.count();
    if (taken_ns > last_disable_.at.count()) {
      findings_.Add(FindingKind::kSampledWhileDisabled, sensor_, moment);
    }
  } else if (is_right) {
    findings_.Add(FindingKind::kSampledBeforeStart, sensor_, moment);
  }
}

void SensorChecks::AddInterval(const Moment& moment, std::int64_t interval_ns) {
  const bool is_in_ns =
      last_clock_ != SampleClock::kMicroseconds && last_clock_ != SampleClock::kMilliseconds;
  if (!HasPeriod() || !is_in_ns || interval_ns < 0) return;
  CheckSilence(moment, WrappingAdd(last_timestamp_ns_, interval_ns));
  ++span_.intervals;
  if (interval_ns < fast_ns_ && span_.fast++ == 0) span_.first_fast = moment;
  if (interval_ns > slow_ns_ && span_.slow++ == 0) span_.first_slow = moment;
  if (std::abs(interval_ns - span_.last_interval_ns) <= span_.last_interval_ns / 5) {
    ++span_.steady;
    span_.steady_ns += static_cast<double>(interval_ns);
  }
  span_.last_interval_ns = interval_ns;
}

void SensorChecks::AddLatency(std::int64_t latency_ns) {
  if (span_.timely++ == 0) span_.least_latency_ns = latency_ns;
  span_.least_latency_ns = std::min(span_.least_latency_ns, latency_ns);
  span_.greatest_latency_ns = std::max(span_.greatest_latency_ns, latency_ns);
}

void SensorChecks::CheckSilence(const Moment& moment, std::int64_t until_ns) {
  const Moment& since = span_.samples > 0 ? last_sample_ : last_enable_;
  const std::int64_t since_ns = span_.samples > 0 ? last_timestamp_ns_ : last_enable_.at.count();
  const std::int64_t gap_ns = WrappingSubtract(until_ns, since_ns);
  // What may still be on its way, or in a batch, is not missing.
  if (gap_ns <= kSecondNs || gap_ns <= 2 * span_.greatest_latency_ns) return;
  const bool was_steady = span_.samples == 0 || (span_.steady >= kFewIntervals && IsSteady());
  const std::int64_t usual_ns = std::max(span_.period_ns, span_.last_interval_ns);
  const std::int64_t awake_ns = gap_ns - (moment.asleep - since.asleep).count();
  if (!was_steady || awake_ns <= kSecondNs || awake_ns / kSilentPeriods < usual_ns) return;
  findings_.Add(FindingKind::kSilent, sensor_, since);
}

void SensorChecks::EndSpan(const Moment& moment) {
  const bool has_clock = last_clock_ == SampleClock::kElapsedRealtime || span_.samples == 0;
  if (HasPeriod() && has_clock) CheckSilence(moment, moment.at.count());
  if (span_.intervals >= kFewIntervals) {
    if (2 * span_.fast > span_.intervals) {
      findings_.Add(FindingKind::kTooFast, sensor_, span_.first_fast, span_.fast);
    }
    if (2 * span_.slow > span_.intervals && IsSteady()) {
      findings_.Add(FindingKind::kTooSlow, sensor_, span_.first_slow, span_.slow);
    }
  }
  if (enables_ > 1) CompareWithLastSpan();
  last_span_ = span_;
}

void SensorChecks::CompareWithLastSpan() const {
  const auto period = static_cast<double>(span_.period_ns);
  const auto last_period = static_cast<double>(last_span_.period_ns);
  const bool have_periods = HasPeriod() && last_span_.period_ns >= kLeastPeriodNs;
  if (have_periods && DifferBy(kPeriodJump, period, last_period)) {
    findings_.Add(FindingKind::kPeriodJumps, sensor_, last_enable_);
  }
  const auto interval = [](const Span& span) {
    return span.steady_ns / static_cast<double>(span.steady);
  };
  if (span_.period_ns == last_span_.period_ns && span_.steady >= kFewIntervals &&
      last_span_.steady >= kFewIntervals &&
      DifferBy(kRateJump, interval(span_), interval(last_span_))) {
    findings_.Add(FindingKind::kRateJumps, sensor_, last_enable_);
  }
  const auto latency = static_cast<double>(std::max<std::int64_t>(span_.least_latency_ns, 1));
  const auto last_latency =
      static_cast<double>(std::max<std::int64_t>(last_span_.least_latency_ns, 1));
  const bool have_samples = span_.timely >= kFewSamples && last_span_.timely >= kFewSamples;
  if (have_samples && DifferBy(kLatencyJump, latency, last_latency) &&
      std::abs(latency - last_latency) >= kLatencyJumpNs) {
    findings_.Add(FindingKind::kLatencyJumps, sensor_, last_enable_);
  }
}

}  // namespace sensorvela::tools
