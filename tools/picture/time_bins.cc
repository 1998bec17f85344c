#include "tools/picture/time_bins.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>

namespace sensorvela::tools {
namespace {

constexpr std::size_t kMaxBins = 1500;

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
constexpr auto kDay = hours(24);
/// The last is enough for all times that a trace can have.
constexpr std::array<std::chrono::nanoseconds, 11> kWidths = {
    seconds(1), seconds(5), seconds(15), minutes(1), minutes(5), minutes(15),
    hours(1),   hours(6),   kDay,        10 * kDay,  100 * kDay};

TimeBins Bins(TimeBins::Instant begin, TimeBins::Instant end, std::chrono::nanoseconds width) {
  const TimeBins::Instant first = begin - begin % width;
  return {first, width, static_cast<std::size_t>((end - first) / width) + 1};
}

}  // namespace

std::size_t TimeBins::IndexOf(Instant at) const {
  return at < begin ? 0 : std::min(static_cast<std::size_t>((at - begin) / width), count - 1);
}

TimeBins BinsFor(TimeBins::Instant begin, TimeBins::Instant end) {
  for (const auto width : kWidths) {
    const TimeBins bins = Bins(begin, end, width);
    if (bins.count <= kMaxBins) return bins;
  }
  return Bins(begin, end, kWidths.back());
}

}  // namespace sensorvela::tools
