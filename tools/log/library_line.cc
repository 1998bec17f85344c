#include "tools/log/library_line.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "engine/counting_rules.h"
#include "engine/log_lines.h"

namespace sensorvela::tools {
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

/// Takes a number in the shortest form from the start of `text`, unless it is out of range.
template <typename T>
bool TakeDecimal(std::string_view& text, std::int64_t& number) {
  T value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc()) {
    return false;
  }
  number = value;
  return TakePrefix(text, std::to_string(value));
}

/// Takes eight digits from the start of `text`.
bool TakeHex(std::string_view& text, std::int64_t& number) {
  const std::string_view digits = text.substr(0, 8);
  if (digits.size() < 8 || digits.find_first_not_of("0123456789abcdef") != std::string_view::npos) {
    return false;
  }
  std::uint32_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  number = value;
  text.remove_prefix(digits.size());
  return true;
}

/// Takes what the conversion at the start of `format` writes from the start of `text`.
bool TakeConversion(std::string_view& format, std::string_view& text, std::int64_t& number) {
  if (TakePrefix(format, "%d")) return TakeDecimal<std::int32_t>(text, number);
  if (TakePrefix(format, "%u")) return TakeDecimal<std::uint32_t>(text, number);
  return TakePrefix(format, "%08x") && TakeHex(text, number);
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
  return std::cmp_greater(line.numbers[1], kErrorCapPerCycle) &&
         std::cmp_equal(line.numbers[2], kErrorCapPerCycle);
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

}  // namespace sensorvela::tools
