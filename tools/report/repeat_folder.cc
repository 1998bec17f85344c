#include "tools/report/repeat_folder.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "tools/text/clock_time.h"

namespace sensorvela::tools {
namespace {

constexpr std::size_t kMaxPeriod = 4;

}  // namespace

void RepeatFolder::Add(ReportLine line) {
  if (line.key.empty()) line.key = line.text;
  if (present_ && present_->line.key == line.key) {
    ++present_->times;
    present_->last = line.at;
    present_->last_trace_line = line.trace_line;
    return;
  }
  if (present_) AddRun(*present_);
  const Instant at = line.at;
  const std::size_t trace_line = line.trace_line;
  present_ = Run{.line = std::move(line), .last = at, .last_trace_line = trace_line};
}

void RepeatFolder::Flush() {
  if (present_) AddRun(*present_);
  present_.reset();
  EndTurns();
}

void RepeatFolder::AddRun(const Run& run) {
  if (ContinuesTurn(run)) {
    turn_.push_back(run);
    if (turn_.size() < period_) return;
    ++turns_;
    turns_end_ = run.last;
    turn_.clear();
    return;
  }
  if (period_ != 0) {
    EndTurns();
    AddRun(run);
    return;
  }
  PrintRun(run);
}

bool RepeatFolder::ContinuesTurn(const Run& run) {
  if (period_ != 0) return printed_[printed_.size() - period_ + turn_.size()] == run;
  for (std::size_t period = 2; period <= printed_.size(); ++period) {
    if (printed_[printed_.size() - period] != run) continue;
    period_ = period;
    return true;
  }
  return false;
}

void RepeatFolder::EndTurns() {
  if (turns_ != 0) {
    auto look = ReportLine::Look::kPlain;
    for (std::size_t i = 1; i <= period_; ++i) {
      look = std::max(look, printed_[printed_.size() - i].line.look);
    }
    print_({.at = turns_end_,
            .text = "... the last " + std::to_string(period_) + " lines " + std::to_string(turns_) +
                    (turns_ == 1 ? " more time" : " more times") + " until " +
                    ShortClockTime(turns_end_),
            .look = look});
    printed_.clear();
  }
  period_ = 0;
  turns_ = 0;
  for (const Run& run : std::exchange(turn_, {})) PrintRun(run);
}

void RepeatFolder::PrintRun(const Run& run) {
  ReportLine line = run.line;
  if (run.times > 1) {
    line.count = "  (" + std::to_string(run.times) + " times";
    if (run.last != line.at) line.count += ", until " + ShortClockTime(run.last);
    if (run.last_trace_line != line.trace_line) {
      line.count += ", to line " + std::to_string(run.last_trace_line);
    }
    line.count += ')';
  }
  print_(line);
  printed_.push_back(run);
  if (printed_.size() > kMaxPeriod) printed_.pop_front();
}

}  // namespace sensorvela::tools
