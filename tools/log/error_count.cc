#include "tools/log/error_count.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "engine/counting_rules.h"

namespace sensorvela::tools {
namespace {

/// Limits the memory. Of what a further chain lacks nothing is said.
constexpr std::size_t kMaxChains = 1000;

}  // namespace

std::optional<LogPosition> ErrorCount::Reported(const LogPosition& counted_after) {
  const auto chain = lacking_.upper_bound(counted_after.line);
  if (chain == lacking_.end()) {
    ++spare_reported_;
  } else {
    --missing_reported_;
    if (--chain->second == 0) lacking_.erase(chain);
  }

  const auto place =
      std::ranges::upper_bound(counted_after_, counted_after.line, {}, &LogPosition::line);
  counted_after_.insert(place, counted_after);
  if (counted_after_.size() > kErrorCapPerCycle + 1) counted_after_.erase(counted_after_.begin());

  std::optional<LogPosition> ended_after;
  if (counted_after_.size() > kErrorCapPerCycle) ended_after = counted_after_.front();
  const bool follows_blocked = blocked_count_ > 0 && blocked_.line <= counted_after.line;
  if (follows_blocked && (!ended_after || ended_after->line < blocked_.line)) {
    ended_after = blocked_;
  }
  return ended_after;
}

std::optional<LogPosition> ErrorCount::Blocked(const LogPosition& position, std::uint32_t count) {
  const auto next = chain_counts_.lower_bound(count);
  if (next != chain_counts_.begin()) {
    const auto chain = std::prev(next);
    missing_blocked_ += count - *chain - 1;
    chain_counts_.erase(chain);
    chain_counts_.insert(count);
  } else if (chain_counts_.size() < kMaxChains) {
    missing_blocked_ += count - kErrorCapPerCycle - 1;
    chain_counts_.insert(count);
    StartChain(position);
  }

  const bool starts_afresh = blocked_count_ >= count;
  blocked_count_ = count;
  const LogPosition last = std::exchange(blocked_, position);
  return starts_afresh ? std::optional(last) : std::nullopt;
}

void ErrorCount::StartChain(const LogPosition& position) {
  const auto taken =
      static_cast<std::uint32_t>(std::min<std::uint64_t>(spare_reported_, kErrorCapPerCycle));
  spare_reported_ -= taken;
  if (taken == kErrorCapPerCycle) return;
  missing_reported_ += kErrorCapPerCycle - taken;
  lacking_[position.line] = kErrorCapPerCycle - taken;
}

}  // namespace sensorvela::tools
