#include "tools/log/log_summary.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/log_tag.h"

namespace sensorvela::tools {
namespace {

constexpr std::int64_t kNsPerMs = 1'000'000;

/// How many processes, and kinds of error of processes, are followed.
constexpr std::size_t kMaxFollowed = 1000;

/// The entry of `key`, new if there is none; null if it is new and the map is full.
template <typename Map>
auto* Followed(Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  if (found != map.end()) return &found->second;
  return map.size() < kMaxFollowed ? &map[key] : nullptr;
}

/// The line above each part of a bug report: `------ SYSTEM LOG (logcat ...) ------`.
bool BeginsSection(std::string_view text) {
  return text.starts_with("------ ") && text.ends_with(" ------");
}

}  // namespace

std::optional<std::int64_t> EngineStart::WaitMs() const {
  if (!started || !wait_ended || started->time.text.empty() || wait_ended->time.text.empty()) {
    return std::nullopt;
  }
  // A clock that was set back meanwhile measures nothing.
  const std::int64_t ns = wait_ended->time.ns - started->time.ns;
  return ns >= 0 ? std::optional(ns / kNsPerMs) : std::nullopt;
}

LogSummary::LogSummary() : log_lines_(kLogTag) {}

void LogSummary::AddLine(std::string_view text) {
  ++lines;
  if (BeginsSection(text)) BeginLog();
  const std::optional<LogLine> line = log_lines_.Read(text);
  if (!line) return;
  const std::optional<LibraryLine> found = FindLibraryLine(line->priority, line->text);
  if (!found) {
    ++unknown_lines;
    return;
  }
  ++library_lines;
  Add(*found, *line, {.line = lines, .time = line->time});
}

void LogSummary::Add(const LibraryLine& found, const LogLine& line, const LogPosition& position) {
  switch (found.kind) {
    case LineKind::kServiceNotRegistered:
      AddStart(ServiceAtStart::kNotDeclared, line, position);
      break;
    case LineKind::kWaitingForService:
      AddStart(ServiceAtStart::kWaiting, line, position);
      break;
    case LineKind::kServiceOnline:
      AddWaitEnd(ServiceAtStart::kOnline, line, position);
      break;
    case LineKind::kNoService:
      AddWaitEnd(ServiceAtStart::kNotFound, line, position);
      break;
    case LineKind::kAtomsDropped:
      AddLostDrain(line.pid, position);
      break;
    case LineKind::kReportFailed:
      AddFailedReport(static_cast<std::int32_t>(found.numbers[0]), line.pid, position);
      break;
    default:
      AddError(found, line.pid, position);
  }
}

void LogSummary::AddStart(ServiceAtStart service, const LogLine& line,
                          const LogPosition& position) {
  ++starts;
  if (Process* process = Followed(processes_, line.pid)) {
    // Another engine counts from zero. The first one's errors may be logged just before its start.
    std::erase_if(counts_, [&](const auto& entry) {
      const auto& [key, count] = entry;
      return std::get<Pid>(key) == line.pid &&
             (process->has_engine || count.IsLongBefore(position));
    });
    *process = {.has_engine = true,
                .waits_for_service = service == ServiceAtStart::kWaiting,
                .absence = {}};
  }
  if (!engines.Full()) {
    engines.rows.push_back({line.pid, line.tid, service, position, std::nullopt});
  }
}

void LogSummary::AddWaitEnd(ServiceAtStart service, const LogLine& line,
                            const LogPosition& position) {
  Process* const process = Followed(processes_, line.pid);
  // A process that is not followed is taken to have logged its start.
  const bool has_start = process == nullptr || process->waits_for_service;
  if (process != nullptr) {
    *process = {.has_engine = true, .waits_for_service = false, .absence = {}};
  }
  for (std::size_t i = engines.rows.size(); i > first_engine_; --i) {
    EngineStart& engine = engines.rows[i - 1];
    if (engine.pid != line.pid || engine.tid != line.tid ||
        engine.service != ServiceAtStart::kWaiting) {
      continue;
    }
    engine.service = service;
    engine.wait_ended = position;
    return;
  }
  // The start is missing, or it found the table full.
  if (!has_start) ++starts;
  if (!engines.Full()) {
    engines.rows.push_back({line.pid, line.tid, service, std::nullopt, position});
  }
}

void LogSummary::AddLostDrain(const Pid& pid, const LogPosition& position) {
  ++lost_drains;
  Process* const process = Followed(processes_, pid);
  if (process != nullptr && process->absence) {
    absences.rows[*process->absence].drains.Add(position);
    return;
  }
  if (absences.Full()) return;
  if (process != nullptr) process->absence = absences.rows.size();
  absences.rows.push_back({.pid = pid, .drains = {1, position, position}});
}

void LogSummary::AddFailedReport(std::int32_t atom_id, const Pid& pid,
                                 const LogPosition& position) {
  // The service was found for this drain.
  if (Process* process = Followed(processes_, pid)) process->absence.reset();
  ++failed_reports;
  if (Occurrences* atom = FindOrAdd(failed_atoms, atom_id)) atom->Add(position);
}

void LogSummary::AddError(const LibraryLine& found, const Pid& pid, const LogPosition& position) {
  const bool is_hal = found.kind == LineKind::kHalError || found.kind == LineKind::kHalErrorBlocked;
  const bool is_blocked =
      found.kind == LineKind::kHalErrorBlocked || found.kind == LineKind::kRuntimeErrorBlocked;
  ErrorTable& family = is_hal ? hal_errors : runtime_errors;
  const auto enumerator = static_cast<std::int32_t>(found.numbers[0]);

  ErrorCount::Finding finding;
  if (ErrorCount* count = Followed(counts_, {pid, is_hal, enumerator})) {
    finding = is_blocked ? count->Blocked(position, static_cast<std::uint32_t>(found.numbers[1]))
                         : count->Reported(position);
  }
  for (ErrorTally* tally : {&family.total, FindOrAdd(family.by_enumerator, enumerator)}) {
    if (tally == nullptr) continue;
    tally->lines.Add(position);
    tally->reported += finding.missing_reported;
    tally->blocked += finding.missing_blocked;
    tally->missing += finding.missing_reported + finding.missing_blocked;
    if (finding.was_missing) {
      --tally->missing;
    } else {
      ++(is_blocked ? tally->blocked : tally->reported);
    }
  }
  if (finding.cycle_end) AddCycleEnd(pid, *finding.cycle_end);
  if (is_blocked) return;
  const ReportedError error = {.enumerator = enumerator,
                               .code = static_cast<std::int32_t>(found.numbers[1]),
                               .sensor_high = static_cast<std::uint32_t>(found.numbers[2])};
  if (Occurrences* row = FindOrAdd(family.by_sensor, error)) row->Add(position);
}

void LogSummary::AddCycleEnd(const Pid& pid, const Interval& between) {
  // Several counts show the same end. Where two intervals overlap, one end is enough for both.
  for (std::size_t i = cycle_ends.rows.size(); i > first_cycle_end_; --i) {
    CycleEnd& known = cycle_ends.rows[i - 1];
    if (known.pid != pid || between.after.line >= known.between.before.line ||
        known.between.after.line >= between.before.line) {
      continue;
    }
    if (between.after.line > known.between.after.line) known.between.after = between.after;
    if (between.before.line < known.between.before.line) known.between.before = between.before;
    return;
  }
  if (cycle_ends.Full()) return;
  cycle_ends.rows.push_back({pid, between});
}

void LogSummary::BeginLog() {
  log_lines_.EndMessage();
  processes_.clear();
  counts_.clear();
  first_engine_ = engines.rows.size();
  first_cycle_end_ = cycle_ends.rows.size();
}

}  // namespace sensorvela::tools
