#include "tools/log/library_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <span>
#include <string>
#include <system_error>

#include "engine/log_lines.h"

namespace sensorvela::devicelog {
namespace {

struct LineFormat {
  LineKind kind;
  char priority;
  std::string_view format;
};

constexpr std::array kFormats = {
    LineFormat{LineKind::kServiceNotRegistered, 'E', kServiceNotRegisteredLine},
    LineFormat{LineKind::kWaitingForService, 'I', kWaitingForServiceLine},
    LineFormat{LineKind::kServiceOnline, 'I', kServiceOnlineLine},
    LineFormat{LineKind::kNoService, 'E', kNoServiceLine},
    LineFormat{LineKind::kAtomsDropped, 'E', kAtomsDroppedLine},
    LineFormat{LineKind::kReportFailed, 'E', kReportFailedLine},
    LineFormat{LineKind::kHalError, 'I', kHalErrorLine},
    LineFormat{LineKind::kRuntimeError, 'I', kRuntimeErrorLine},
    LineFormat{LineKind::kHalErrorBlocked, 'E', kHalErrorBlockedLine},
    LineFormat{LineKind::kRuntimeErrorBlocked, 'E', kRuntimeErrorBlockedLine},
};

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// Takes a number from the start of `text`; returns its digits, or nothing if it is out of range.
template <typename T>
std::string_view TakeNumber(std::string_view& text, int base, std::int64_t& number) {
  T value = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc()) return {};
  number = value;
  const std::string_view digits = text.substr(0, static_cast<std::size_t>(stop - text.data()));
  text.remove_prefix(digits.size());
  return digits;
}

/// Takes what the conversion at the start of `format` writes from the start of `text`.
bool TakeConversion(std::string_view& format, std::string_view& text, std::int64_t& number) {
  if (TakePrefix(format, "%d")) {
    return TakeNumber<std::int32_t>(text, 10, number) == std::to_string(number);
  }
  if (TakePrefix(format, "%u")) {
    return TakeNumber<std::uint32_t>(text, 10, number) == std::to_string(number);
  }
  if (!TakePrefix(format, "%08x")) return false;
  const std::string_view digits = TakeNumber<std::uint32_t>(text, 16, number);
  return digits.size() == 8 &&
         std::ranges::none_of(digits, [](char c) { return c < 'a' && c > '9'; });
}

/// Whether `printf` can have written `text` with this format, which has at most as many
/// conversions as there are numbers; stores the numbers.
bool Matches(std::string_view format, std::string_view text, std::span<std::int64_t> numbers) {
  for (std::int64_t& number : numbers) {
    const std::string_view literal = format.substr(0, format.find('%'));
    if (!TakePrefix(text, literal)) return false;
    format.remove_prefix(literal.size());
    if (!format.empty() && !TakeConversion(format, text, number)) return false;
  }
  return text == format;
}

/// A blocked error is always past the cap.
bool IsPossible(const LibraryLine& line) {
  if (line.kind != LineKind::kHalErrorBlocked && line.kind != LineKind::kRuntimeErrorBlocked) {
    return true;
  }
  return line.numbers[1] > kErrorCapPerCycle && line.numbers[2] == kErrorCapPerCycle;
}

}  // namespace

std::optional<LibraryLine> FindLibraryLine(char priority, std::string_view text) {
  for (const LineFormat& candidate : kFormats) {
    LibraryLine line{.kind = candidate.kind, .numbers = {}};
    if (priority == candidate.priority && Matches(candidate.format, text, line.numbers) &&
        IsPossible(line)) {
      return line;
    }
  }
  return std::nullopt;
}

}  // namespace sensorvela::devicelog
