// Gives the log reader arbitrary bytes. It must refuse them, or print counts that are no fewer than
// their lines, in objects, and in a text that is printable.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "tools/input/input.h"
#include "tools/log/log_report.h"
#include "tools/log/log_summary.h"
#include "tools/log/read_lines.h"

namespace {

using sensorvela::tools::ErrorTable;
using sensorvela::tools::LogSummary;

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckErrors(const ErrorTable& errors) {
  for (const auto& [number, tally] : errors.by_enumerator.rows) {
    Check(tally.reported + tally.blocked == tally.lines.count + tally.missing);
  }
}

void CheckEnds(const LogSummary& summary) {
  for (const auto& [pid, between] : summary.cycle_ends.rows) {
    Check(between.after.line > 0 && between.after.line < between.before.line);
  }
}

void CheckOutput(const LogSummary& summary) {
  std::ostringstream text;
  sensorvela::tools::PrintText(summary, text);
  const auto is_printable = [](char c) { return c == '\n' || (c >= ' ' && c != 0x7f); };
  Check(std::ranges::all_of(text.str(), is_printable));
  std::stringstream objects;
  sensorvela::tools::PrintJsonLines(summary, objects);
  for (std::string line; std::getline(objects, line);) {
    Check(nlohmann::json::parse(line, nullptr, false).is_object());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LogSummary summary;
  const sensorvela::tools::Input input({reinterpret_cast<const char*>(data), size});
  const std::string error = sensorvela::tools::ReadLines(
      input, [&summary](std::string_view line) { summary.AddLine(line); });
  if (!error.empty()) return 0;
  summary.EndLog();
  CheckErrors(summary.hal_errors);
  CheckErrors(summary.runtime_errors);
  CheckEnds(summary);
  CheckOutput(summary);
  return 0;
}
