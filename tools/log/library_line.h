// The lines that the library writes to the log.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace sensorvela::tools {

enum class LineKind : std::uint8_t {
  kServiceNotRegistered,
  kWaitingForService,
  kServiceOnline,
  kNoService,
  kAtomsDropped,
  kReportFailed,
  kHalError,
  kRuntimeError,
  kHalErrorBlocked,
  kRuntimeErrorBlocked,
};

struct LibraryLine {
  LineKind kind;
  /// The numbers in the text, in order, as engine/log_lines.h describes them; 0 after the last.
  std::array<std::int64_t, 3> numbers;
};

/// The library's line with this priority and text, if it has such a line.
std::optional<LibraryLine> FindLibraryLine(char priority, std::string_view text);

}  // namespace sensorvela::tools
