#include "tools/log/error_count.h"

#include <cstdint>
#include <cstdlib>

#include "engine/counting_rules.h"

namespace sensorvela::tools {
namespace {

constexpr std::int64_t kMaxDelayNs = 10'000'000'000;

/// Whether one line may have overtaken the other: a line is written after its count, without a
/// lock. In a log without times any line may have. Time also goes back where the clock is set, and
/// at New Year where the log has no year.
bool AreClose(const LogPosition& a, const LogPosition& b) {
  return a.time.text.empty() || std::abs(a.time.ns - b.time.ns) < kMaxDelayNs;
}

}  // namespace

ErrorCount::Finding ErrorCount::Reported(const LogPosition& position) {
  Finding finding;
  last_ = position;
  if (blocked_count_ > 0 && missing_reported_ > 0 && AreClose(position, blocked_)) {
    --missing_reported_;
    finding.was_missing = true;
    return finding;
  }
  if (blocked_count_ > 0) finding.cycle_end = {blocked_, position};
  blocked_count_ = 0;
  reported_.push_back(position);
  if (reported_.size() > kErrorCapPerCycle + 1) reported_.pop_front();
  if (reported_.size() > kErrorCapPerCycle) finding.cycle_end = {reported_.front(), position};
  return finding;
}

ErrorCount::Finding ErrorCount::Blocked(const LogPosition& position, std::uint32_t count) {
  Finding finding;
  last_ = position;
  if (blocked_count_ > 0 && count > blocked_count_) {
    finding.missing_blocked = count - blocked_count_ - 1;
  } else {
    if (blocked_count_ > 0) finding.cycle_end = {blocked_, position};
    if (reported_.size() > kErrorCapPerCycle) {
      finding.cycle_end = {reported_[0], reported_[1]};
      reported_.pop_front();
    }
    missing_reported_ = kErrorCapPerCycle - static_cast<std::uint32_t>(reported_.size());
    finding.missing_reported = missing_reported_;
    finding.missing_blocked = count - kErrorCapPerCycle - 1;
    reported_.clear();
  }
  blocked_count_ = count;
  blocked_ = position;
  return finding;
}

bool ErrorCount::IsLongBefore(const LogPosition& start) const { return !AreClose(start, last_); }

}  // namespace sensorvela::tools
