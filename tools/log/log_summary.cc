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

/// How many processes, threads, and kinds of error of processes, are followed.
constexpr std::size_t kMaxFollowed = 1000;

constexpr int kLastStep = 3;

/// The entry of `key`, new if there is none; null if it is new and the map is full.
template <typename Map>
auto* Followed(Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  if (found != map.end()) return &found->second;
  return map.size() < kMaxFollowed ? &map[key] : nullptr;
}

/// An engine's reporter thread writes lines of these steps in this order, those of the last one any
/// number of times. 0 for the lines of other threads.
int Step(LineKind kind) {
  switch (kind) {
    case LineKind::kServiceNotRegistered:
    case LineKind::kWaitingForService:
      return 1;
    case LineKind::kServiceOnline:
    case LineKind::kNoService:
      return 2;
    case LineKind::kAtomsDropped:
    case LineKind::kReportFailed:
      return kLastStep;
    default:
      return 0;
  }
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

std::optional<WhyNoEnds> LogSummary::Process::WhyUntold(const Pid& pid) const {
  if (!pid) return WhyNoEnds::kNoProcess;
  if (has_several_engines) return WhyNoEnds::kSeveralEngines;
  return begins_with_start ? std::nullopt : std::optional(WhyNoEnds::kNoStart);
}

LogSummary::LogSummary() : log_lines_(kLogTag) {}

void LogSummary::AddLine(std::string_view text) {
  ++lines;
  if (BeginsSection(text)) EndLog();
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

void LogSummary::EndLog() {
  log_lines_.EndMessage();
  TellMissingErrors();
  TellCycleEnds();
  processes_.clear();
  threads_.clear();
  counts_.clear();
}

void LogSummary::Add(const LibraryLine& found, const LogLine& line, const LogPosition& position) {
  AddToProcess(found.kind, line, position);
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
      AddLostDrain(line, position);
      break;
    case LineKind::kReportFailed:
      AddFailedReport(static_cast<std::int32_t>(found.numbers[0]), line, position);
      break;
    default:
      AddError(found, line, position);
  }
  if (Thread* thread = FindThread(line)) thread->last = position;
}

LogSummary::Thread* LogSummary::FindThread(const LogLine& line) {
  return Followed(threads_, {line.pid, line.tid});
}

void LogSummary::AddToProcess(LineKind kind, const LogLine& line, const LogPosition& position) {
  Process* const process = Followed(processes_, line.pid);
  if (process == nullptr) return;
  const int step = Step(kind);
  if (process->first.line == 0) {
    process->first = position;
    process->begins_with_start = step == 1;
  }
  if (step == 0) return;
  const bool is_next_step = step > process->step || step == kLastStep;
  const bool is_same_thread =
      !line.tid || !process->reporter_tid || line.tid == process->reporter_tid;
  if (!is_next_step || !is_same_thread) process->has_several_engines = true;
  process->step = step;
  if (line.tid) process->reporter_tid = line.tid;
}

void LogSummary::AddStart(ServiceAtStart service, const LogLine& line,
                          const LogPosition& position) {
  ++starts;
  std::optional<std::size_t> row;
  if (!engines.Full()) {
    row = engines.rows.size();
    engines.rows.push_back({line.pid, line.tid, service, position, std::nullopt});
  }
  Thread* const thread = FindThread(line);
  if (thread == nullptr) return;
  thread->absence.reset();
  if (service != ServiceAtStart::kWaiting) return;
  // Of several nothing tells whose wait ends.
  thread->engine = ++thread->waiting_for_service == 1 ? row : std::nullopt;
}

void LogSummary::AddWaitEnd(ServiceAtStart service, const LogLine& line,
                            const LogPosition& position) {
  Thread* const thread = FindThread(line);
  if (thread == nullptr) return;  // It is taken to have logged its start.
  thread->absence.reset();
  if (thread->waiting_for_service > 0) {
    --thread->waiting_for_service;
    if (thread->engine) {
      EngineStart& engine = engines.rows[*thread->engine];
      engine.service = service;
      engine.wait_ended = position;
    }
    thread->engine.reset();
    return;
  }
  // The start is missing.
  ++starts;
  if (!engines.Full()) {
    engines.rows.push_back({line.pid, line.tid, service, std::nullopt, position});
  }
}

void LogSummary::AddLostDrain(const LogLine& line, const LogPosition& position) {
  ++lost_drains;
  Thread* const thread = FindThread(line);
  if (thread != nullptr && thread->absence) {
    absences.rows[*thread->absence].drains.Add(position);
    return;
  }
  if (absences.Full()) return;
  if (thread != nullptr) thread->absence = absences.rows.size();
  absences.rows.push_back({line.pid, line.tid, {1, position, position}});
}

void LogSummary::AddFailedReport(std::int32_t atom_id, const LogLine& line,
                                 const LogPosition& position) {
  // The service was found for this drain.
  if (Thread* thread = FindThread(line)) thread->absence.reset();
  ++failed_reports;
  if (Occurrences* atom = FindOrAdd(failed_atoms, atom_id)) atom->Add(position);
}

void LogSummary::AddError(const LibraryLine& found, const LogLine& line,
                          const LogPosition& position) {
  const bool is_hal = found.kind == LineKind::kHalError || found.kind == LineKind::kHalErrorBlocked;
  const bool is_blocked =
      found.kind == LineKind::kHalErrorBlocked || found.kind == LineKind::kRuntimeErrorBlocked;
  ErrorTable& family = is_hal ? hal_errors : runtime_errors;
  const auto enumerator = static_cast<std::int32_t>(found.numbers[0]);

  if (ErrorCount* count = Followed(counts_, {line.pid, is_hal, enumerator})) {
    const Thread* const thread = line.tid ? FindThread(line) : nullptr;
    const auto ended_after =
        is_blocked ? count->Blocked(position, static_cast<std::uint32_t>(found.numbers[1]))
                   : count->Reported(thread == nullptr ? LogPosition() : thread->last);
    if (ended_after) AddCycleEnd(line.pid, *ended_after, position);
  }
  for (ErrorTally* tally : {&family.total, FindOrAdd(family.by_enumerator, enumerator)}) {
    if (tally == nullptr) continue;
    tally->lines.Add(position);
    ++(is_blocked ? tally->blocked : tally->reported);
  }
  if (is_blocked) return;
  const ReportedError error = {.enumerator = enumerator,
                               .code = static_cast<std::int32_t>(found.numbers[1]),
                               .sensor_high = static_cast<std::uint32_t>(found.numbers[2])};
  if (Occurrences* row = FindOrAdd(family.by_sensor, error)) row->Add(position);
}

void LogSummary::AddCycleEnd(const Pid& pid, const LogPosition& after, const LogPosition& before) {
  Process* const process = Followed(processes_, pid);
  if (process == nullptr) return;
  // An engine ends no cycle before it logs its start.
  const Interval between = {after.line > 0 ? after : process->first, before};
  // Several counts show the same end. An interval that overlaps the last one may have no further
  // end. Since intervals come in the order in which they end, as many as possible are kept.
  if (between.after.line < process->last_end) return;
  process->last_end = before.line;
  if (!process->ends.Full()) process->ends.rows.push_back(between);
}

void LogSummary::TellMissingErrors() {
  for (const auto& [key, count] : counts_) {
    const auto& [pid, is_hal, enumerator] = key;
    ErrorTable& family = is_hal ? hal_errors : runtime_errors;
    const auto row = family.by_enumerator.rows.find(enumerator);
    for (ErrorTally* tally :
         {&family.total, row == family.by_enumerator.rows.end() ? nullptr : &row->second}) {
      if (tally == nullptr) continue;
      tally->reported += count.missing_reported();
      tally->blocked += count.missing_blocked();
      tally->missing += count.missing_reported() + count.missing_blocked();
    }
  }
}

void LogSummary::TellCycleEnds() {
  std::vector<CycleEnd> ends;
  for (const auto& [pid, process] : processes_) {
    if (process.ends.rows.empty()) continue;
    if (const auto why = process.WhyUntold(pid)) {
      if (!untold_ends.Full()) untold_ends.rows.push_back({pid, *why});
      continue;
    }
    cycle_ends.further_lines += process.ends.further_lines;
    for (const Interval& between : process.ends.rows) ends.push_back({pid, between});
  }
  std::ranges::sort(ends, {}, [](const CycleEnd& end) { return end.between.before.line; });
  for (CycleEnd& end : ends) {
    if (!cycle_ends.Full()) cycle_ends.rows.push_back(std::move(end));
  }
}

}  // namespace sensorvela::tools
