#include "testkit/stats_service.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace sensorvela::testkit {

using platform::MutexLock;

StatsService::StatsService(OnReport on_report) : on_report_(std::move(on_report)) {}

void StatsService::AnswerNext(std::int64_t reports, Answer answer) {
  const MutexLock lock(mutex_);
  if (reports > 0) planned_.push_back({reports, answer});
}

std::vector<StatsService::VendorAtom> StatsService::TakeAtoms() {
  const MutexLock lock(mutex_);
  return std::exchange(atoms_, {});
}

void StatsService::WaitForAtoms(std::size_t count) {
  const MutexLock lock(mutex_);
  while (count_ < count) received_.wait(mutex_);
}

ndk::ScopedAStatus StatsService::reportVendorAtom(const VendorAtom& atom) {
  Answer answer = Answer::kOk;
  {
    const MutexLock lock(mutex_);
    answer = TakeAnswer();
    atoms_.push_back(atom);
    ++count_;
    received_.notify_all();
  }
  if (on_report_) on_report_(atom, answer);
  if (answer == Answer::kNoStatus) return ndk::ScopedAStatus(nullptr);
  return ndk::ScopedAStatus::fromStatus(answer == Answer::kOk ? STATUS_OK
                                                              : STATUS_FAILED_TRANSACTION);
}

Answer StatsService::TakeAnswer() {
  if (planned_.empty()) return Answer::kOk;
  PlannedAnswers& next = planned_.front();
  const Answer answer = next.answer;
  if (--next.reports == 0) planned_.pop_front();
  return answer;
}

}  // namespace sensorvela::testkit
