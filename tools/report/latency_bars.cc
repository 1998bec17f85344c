#include "tools/report/latency_bars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <string>
#include <string_view>

namespace sensorvela::tools {
namespace {

constexpr std::array kBandNames = {"up to 2.5 ms", "up to   5 ms", "up to  10 ms", "up to  20 ms",
                                   "over   20 ms"};

constexpr std::size_t kBarWidth = 50;
/// What a line has beside its bar.
constexpr std::size_t kLineWidth = 36;

/// At least one mark for a band that is not empty.
std::string Bar(std::uint64_t count, std::uint64_t largest, std::size_t width) {
  if (count == 0) return "";
  const double marks =
      static_cast<double>(width) * static_cast<double>(count) / static_cast<double>(largest);
  return std::string(std::max<std::size_t>(1, static_cast<std::size_t>(std::lround(marks))), '#');
}

}  // namespace

std::string Share(const std::array<std::uint64_t, kLatencyBands>& bands, std::size_t band) {
  const std::uint64_t count = bands.at(band);
  if (count == 0) return "";
  const auto total = std::accumulate(bands.begin(), bands.end(), std::uint64_t{0});
  const double percent = 100 * static_cast<double>(count) / static_cast<double>(total);
  if (percent < 0.1) return "<0.1 %";
  if (percent >= 99.95 && count < total) return ">99.9 %";
  std::array<char, 16> text;
  std::snprintf(text.data(), text.size(), "%.1f %%", percent);
  return text.data();
}

std::string LatencyBars(const SampleCounts& reported, std::size_t width) {
  const std::uint64_t largest = std::ranges::max(reported.bands);
  if (largest == 0) return "";
  const std::size_t bar_width =
      width == 0 ? kBarWidth
                 : std::clamp(std::max(width, kLineWidth) - kLineWidth, std::size_t{10}, kBarWidth);
  std::string lines;
  for (std::size_t i = 0; i < kBandNames.size(); ++i) {
    const std::uint64_t count = reported.bands[i];
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "  %s |%-*s %10llu %8s", kBandNames[i],
                  static_cast<int>(bar_width), Bar(count, largest, bar_width).c_str(),
                  static_cast<unsigned long long>(count), Share(reported.bands, i).c_str());
    const std::string_view text = line.data();
    lines += std::string(text.substr(0, text.find_last_not_of(' ') + 1)) + '\n';
  }
  return lines;
}

}  // namespace sensorvela::tools
