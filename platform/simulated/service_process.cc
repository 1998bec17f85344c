#include "platform/simulated/service_process.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/simulated/death_recipient.h"
#include "platform/simulated/parcel_size.h"
#include "platform/simulated/service_proxy.h"
#include "platform/simulated/timeline.h"

namespace sensorvela::simulated {

using platform::MutexLock;
using std::chrono::nanoseconds;

ServiceProcess::ServiceProcess(std::shared_ptr<aidl::android::frameworks::stats::IStats> service,
                               ProcessObserver observer)
    : service_(std::move(service)), observer_(std::move(observer)) {}

ServiceProcess::~ServiceProcess() { timeline.ClearAlarm(this); }

void ServiceProcess::SetTimePerAtom(nanoseconds duration) {
  const MutexLock lock(mutex_);
  time_per_atom_ = std::max(duration, nanoseconds::zero());
}

void ServiceProcess::Stop() {
  const MutexLock lock(mutex_);
  if (!is_alive_ || std::exchange(is_stopped_, true) || !is_working_) return;
  timeline.ClearAlarm(this);
  left_ = SaturatingSum(done_at_, -timeline.monotonic.load());
}

void ServiceProcess::GoOn() {
  {
    const MutexLock lock(mutex_);
    if (!is_alive_ || !std::exchange(is_stopped_, false)) return;
    if (is_working_) {
      done_at_ = SaturatingSum(timeline.monotonic, left_);
      SetAlarm();
    }
  }
  Work(timeline.monotonic);
  const MutexLock lock(mutex_);
  if (!is_working_) EndQuestions(true);
}

void ServiceProcess::Die() {
  std::deque<Buffered> lost;
  std::vector<DeathLink> links;
  {
    const MutexLock lock(mutex_);
    if (!is_alive_.exchange(false)) return;
    timeline.ClearAlarm(this);
    lost.swap(buffer_);
    bytes_ = 0;
    is_working_ = false;
    links.swap(death_links_);
  }
  for (const Buffered& each : lost) {
    if (observer_.on_lost) observer_.on_lost(each.atom);
  }
  for (const DeathLink& link : links) link.recipient->on_binder_died(link.cookie);
  ReleaseLookups();  // Only now: a reporter thread that goes on may log.
}

void ServiceProcess::ReleaseLookups() {
  const MutexLock lock(mutex_);
  EndQuestions(false);
}

std::size_t ServiceProcess::AtomsInBuffer() const {
  const MutexLock lock(mutex_);
  return buffer_.size();
}

std::size_t ServiceProcess::BytesInBuffer() const {
  const MutexLock lock(mutex_);
  return bytes_;
}

bool ServiceProcess::AddDeathLink(DeathLink link) {
  const MutexLock lock(mutex_);
  if (is_alive_) death_links_.push_back(link);
  return is_alive_;
}

bool ServiceProcess::RemoveDeathLink(DeathLink link) {
  const MutexLock lock(mutex_);
  return std::erase(death_links_, link) > 0;
}

ndk::SpAIBinder ServiceProcess::HostBinder() {
  std::shared_ptr<ServiceProxy> proxy;
  {
    const MutexLock lock(mutex_);
    proxy = proxy_.lock();
    if (proxy == nullptr) {
      proxy = ndk::SharedRefBase::make<ServiceProxy>(shared_from_this());
      proxy_ = proxy;
    }
  }
  return proxy->asBinder();
}

binder_status_t ServiceProcess::Report(const VendorAtom& atom) {
  const std::size_t bytes = ReportBytes(atom);
  binder_status_t status = STATUS_OK;
  {
    const MutexLock lock(mutex_);
    if (!is_alive_) {
      status = STATUS_DEAD_OBJECT;
    } else if (bytes >= kRefusedBytes || bytes_ + bytes > kBufferBytes) {
      status = STATUS_FAILED_TRANSACTION;
    } else {
      buffer_.push_back({atom, bytes});
      bytes_ += bytes;
    }
  }
  if (observer_.on_report) observer_.on_report(atom, status);
  if (status == STATUS_OK) Work(timeline.monotonic);
  return status;
}

bool ServiceProcess::AwaitAnswer(const std::function<void()>& before_wait) {
  Question question;
  const MutexLock lock(mutex_);
  if (!is_alive_) return false;
  if (!is_stopped_ && !is_working_) return true;
  before_wait();
  questions_.push_back(&question);
  timeline.AddWaiting(1);
  while (!question.is_over) answered_.wait(mutex_);
  return question.is_answered;
}

void ServiceProcess::Work(nanoseconds since) {
  for (;;) {
    std::optional<VendorAtom> taken;
    {
      const MutexLock lock(mutex_);
      if (!Begin(since)) return;
      is_passing_ = true;
      taken = RemoveFirst();
    }
    service_->reportVendorAtom(*taken);
    const MutexLock lock(mutex_);
    is_passing_ = false;
  }
}

bool ServiceProcess::Begin(nanoseconds since) {
  if (!is_alive_ || is_stopped_ || is_working_ || is_passing_ || buffer_.empty()) return false;
  if (time_per_atom_ == nanoseconds::zero()) return true;
  is_working_ = true;
  done_at_ = SaturatingSum(since, time_per_atom_);
  SetAlarm();
  return false;
}

void ServiceProcess::SetAlarm() {
  timeline.SetAlarm(this, done_at_, [weak = weak_from_this()] {
    if (const auto process = weak.lock()) process->Done();
  });
}

void ServiceProcess::Done() {
  std::optional<VendorAtom> taken;
  nanoseconds since;
  {
    const MutexLock lock(mutex_);
    // The process may have been stopped or killed since the alarm rang.
    if (!is_working_ || is_stopped_) return;
    is_working_ = false;
    is_passing_ = true;
    since = done_at_;
    taken = RemoveFirst();
  }
  service_->reportVendorAtom(*taken);
  {
    const MutexLock lock(mutex_);
    is_passing_ = false;
  }
  Work(since);
  // Only now: a reporter thread that goes on reports the next atoms.
  const MutexLock lock(mutex_);
  EndQuestions(true);
}

ServiceProcess::VendorAtom ServiceProcess::RemoveFirst() {
  VendorAtom atom = std::move(buffer_.front().atom);
  bytes_ -= buffer_.front().bytes;
  buffer_.pop_front();
  return atom;
}

void ServiceProcess::EndQuestions(bool is_answered) {
  for (Question* question : questions_) {
    question->is_over = true;
    question->is_answered = is_answered;
  }
  timeline.AddWaiting(-std::ssize(questions_));
  questions_.clear();
  answered_.notify_all();
}

}  // namespace sensorvela::simulated
