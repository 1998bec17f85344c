#include "tools/text/clock_time.h"

#include <array>
#include <cstdio>
#include <string>

namespace sensorvela::replay {
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

}  // namespace sensorvela::replay
