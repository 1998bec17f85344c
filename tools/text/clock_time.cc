#include "tools/text/clock_time.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace sensorvela::tools {
namespace {

constexpr long long kNsPerS = 1'000'000'000;

}  // namespace

std::string ClockTime(simulated::VirtualTime::Instant instant) {
  const long long s = instant.count() / kNsPerS;
  std::array<char, 40> time;
  std::snprintf(time.data(), time.size(), "%02lld:%02lld:%02lld", s / 3600, s / 60 % 60, s % 60);
  return time.data();
}

std::string ExactClockTime(simulated::VirtualTime::Instant instant) {
  std::array<char, 20> fraction;
  std::snprintf(fraction.data(), fraction.size(), ".%09lld", instant.count() % kNsPerS);
  return ClockTime(instant) + fraction.data();
}

std::string ShortClockTime(simulated::VirtualTime::Instant instant) {
  const std::string time = ExactClockTime(instant);
  const std::size_t last = time.find_last_not_of('0');
  return time.substr(0, std::max(time.find('.'), time[last] == '.' ? last : last + 1));
}

}  // namespace sensorvela::tools
