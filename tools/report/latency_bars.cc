#include "tools/report/latency_bars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "tools/facts/captions.h"

namespace sensorvela::tools {
namespace {

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

std::string LatencyBars(const SampleCounts& reported, std::size_t width) {
  const std::uint64_t largest = std::ranges::max(reported.bands);
  if (largest == 0) return "";
  const std::size_t bar_width =
      width == 0 ? kBarWidth
                 : std::clamp(std::max(width, kLineWidth) - kLineWidth, std::size_t{10}, kBarWidth);
  std::string lines;
  for (std::size_t i = 0; i < reported.bands.size(); ++i) {
    const std::uint64_t count = reported.bands[i];
    std::array<char, 120> line;
    std::snprintf(line.data(), line.size(), "  %-5s %3s ms |%-*s %10llu %8s",
                  IsLastBand(i) ? "over" : "up to", BandLimitMs(i).c_str(),
                  static_cast<int>(bar_width), Bar(count, largest, bar_width).c_str(),
                  static_cast<unsigned long long>(count), Share(reported.bands, i).c_str());
    const std::string_view text = line.data();
    lines += std::string(text.substr(0, text.find_last_not_of(' ') + 1)) + '\n';
  }
  return lines;
}

}  // namespace sensorvela::tools
