#include "tools/report/latency_bars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace sensorvela::replay {
namespace {

constexpr std::array kBandNames = {"up to 2.5 ms", "up to   5 ms", "up to  10 ms", "up to  20 ms",
                                   "over   20 ms"};

constexpr double kBarWidth = 50;

/// At least one mark for a band that is not empty.
std::string Bar(std::uint64_t count, std::uint64_t largest) {
  if (count == 0) return "";
  const double marks = kBarWidth * static_cast<double>(count) / static_cast<double>(largest);
  return std::string(std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(marks))), '#');
}

/// The percentage with one decimal; `<0.1` where that would be 0, `>99.9` where it would be 100
/// although `count` is not all, and empty for a `count` of 0.
std::string Share(std::uint64_t count, std::uint64_t total) {
  if (count == 0) return "";
  const double percent = 100 * static_cast<double>(count) / static_cast<double>(total);
  if (percent < 0.1) return "   <0.1 %";
  if (percent >= 99.95 && count < total) return "  >99.9 %";
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%7.1f %%", percent);
  return text.data();
}

}  // namespace

std::string LatencyBars(const ReportedSamples& reported) {
  const std::uint64_t largest = std::ranges::max(reported.bands);
  if (largest == 0) return "";
  const auto total =
      std::accumulate(reported.bands.begin(), reported.bands.end(), std::uint64_t{0});
  std::string lines;
  for (std::size_t i = 0; i < kBandNames.size(); ++i) {
    const std::uint64_t count = reported.bands[i];
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "  %s |%-*s %10llu%s\n", kBandNames[i],
                  static_cast<int>(kBarWidth), Bar(count, largest).c_str(),
                  static_cast<unsigned long long>(count), Share(count, total).c_str());
    lines += line.data();
  }
  return lines;
}

}  // namespace sensorvela::replay
