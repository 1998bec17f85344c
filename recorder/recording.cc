#include "recorder/recording.h"

#include <android/log.h>
#include <pthread.h>
#include <signal.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "recorder/batch_writer.h"

#include "platform/thread_annotations.h"

namespace sensorvela::recorder {

namespace event = trace_format::event;
namespace field = trace_format::field;
using platform::MutexLock;

namespace {

constexpr char kLogTag[] = "sensor-vela-recorder";

void LogEnd(const std::string& path, const std::string& reason) {
  __android_log_print(ANDROID_LOG_ERROR, kLogTag, "The recording %s has ended: %s.", path.c_str(),
                      reason.c_str());
}

/// No handler of the host's runs on the thread that writes, and a file that reaches its size limit
/// does not end the process.
class AllSignalsBlocked {
 public:
  AllSignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  AllSignalsBlocked(const AllSignalsBlocked&) = delete;
  AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

std::shared_ptr<Recording> Recording::Start(const Options& options, std::string_view supplier) try {
  const auto recording = std::make_shared<Recording>(options);
  recording->EngineStarts(supplier);
  const AllSignalsBlocked in_the_new_thread_too;
  // Nobody joins the thread: it may hang with the disk, and it owns what it uses.
  std::thread([recording] { recording->RunWriter(); }).detach();
  return recording;
} catch (const std::exception& error) {  // A refused thread, or too little memory.
  LogEnd(options.path, error.what());
  return nullptr;
}

void Recording::EngineStarts(std::string_view supplier) {
  const MutexLock lock(mutex_);
  last_ns_ = std::max<std::int64_t>(NowNs(), 0);
  clock_offset_.TakeSuspension();
  Append(EventLine(last_ns_, event::kRecording).Integer(field::kVersion, 1));
  Append(EventLine(last_ns_, event::kEngineStart).Text(field::kSupplier, supplier));
}

void Recording::EngineEnds() {
  const MutexLock lock(mutex_);
  RecordSuspension();
  Append(EventLine(InOrder(NowNs()), event::kEnd).Integer(field::kReports, reports_));
  is_finished_ = true;
  WakeWriter();
  while (options_.waits_for_disk && !is_written()) changed_.wait(mutex_);
}

void Recording::Suspended() {
  const MutexLock lock(mutex_);
  RecordSuspension();
}

void Recording::ProcessEnds(std::chrono::steady_clock::time_point deadline) {
  const MutexLock lock(mutex_);
  is_finished_ = true;
  WakeWriter();
  const auto written = [this] { return is_written(); };
  if (options_.waits_for_disk) {
    changed_.wait(mutex_, written);
  } else {
    changed_.wait_until(mutex_, deadline, written);
  }
}

void Recording::ServiceFoundDeclared() {
  const MutexLock lock(mutex_);
  EventLine line(InOrder(NowNs()), event::kServiceFoundDeclared);
  Append(line);
}

void Recording::LookupBegins() {
  const MutexLock lock(mutex_);
  ReleaseUpload();
  RecordSuspension();
  lookup_began_ns_ = InOrder(NowNs());
}

void Recording::LookupEnds(bool found) {
  const MutexLock lock(mutex_);
  lookup_began_ns_.reset();
  found_service_ = found;
  expects_error_line_ = false;
  RecordSuspension();
  Append(EventLine(InOrder(NowNs()), found ? event::kLookupFound : event::kLookupFoundNone)
             .Integer(field::kReports, reports_));
}

void Recording::ReportEnds(bool is_ok) {
  const MutexLock lock(mutex_);
  ++reports_;
  if (is_ok) return;
  expects_error_line_ = true;
  Append(EventLine(InOrder(NowNs()), event::kReportFailed).Integer(field::kReport, reports_));
}

void Recording::EngineLogsError() {
  const MutexLock lock(mutex_);
  // After a lookup that found the service, only a failed report is an error.
  if (!found_service_ || std::exchange(expects_error_line_, false)) return;
  ++reports_;
  Append(EventLine(InOrder(NowNs()), event::kReportSilent).Integer(field::kReport, reports_));
}

void Recording::SupplierIsAsked(bool is_first) {
  const MutexLock lock(mutex_);
  ReleaseUpload();
  if (!is_first) return;
  RecordSuspension();
  EventLine line(InOrder(NowNs()), event::kCycleEnded);
  Append(line);
}

std::int64_t Recording::NowNs() { return android::elapsedRealtimeNano(); }

void Recording::ReleaseUpload() {
  if (!upload_holds_) return;
  upload_holds_ = false;
  changed_.notify_all();
}

void Recording::RecordSuspension(std::int64_t until_ns) {
  // No event can have come while the device was suspended.
  const std::int64_t suspended_ns = std::min(clock_offset_.TakeSuspension(), until_ns - last_ns_);
  if (suspended_ns <= 0) return;
  Append(
      EventLine(until_ns - suspended_ns, event::kSuspended).Integer(field::kForNs, suspended_ns));
  last_ns_ = until_ns;
}

void Recording::Append(EventLine& line) {
  RecordLookupThatWaits();
  AddToBatch(std::string_view(line.Finish()));
}

void Recording::Append(const trace_format::Sample& sample) {
  RecordLookupThatWaits();
  AddToBatch(sample);
}

void Recording::RecordLookupThatWaits() {
  if (!lookup_began_ns_) return;
  EventLine line(lookup_began_ns_.value(), event::kLookupWaits);
  lookup_began_ns_.reset();
  AddToBatch(std::string_view(line.Finish()));
}

template <typename Item>
void Recording::AddToBatch(const Item& item) {
  if (is_finished_ || stopped_ != nullptr) return;
  if (!batch_->Add(item)) {
    Stop(Batch::CanHold(item) ? "the host is faster than the disk" : "an event is too large");
  } else if (batch_->IsHalfFull()) {
    WakeWriter();
  }
}

void Recording::Stop(const char* reason) {
  if (stopped_ != nullptr) return;
  stopped_ = reason;
  is_active_ = false;
  WakeWriter();
}

void Recording::WakeWriter() {
  if (write_now_) return;
  write_now_ = true;
  changed_.notify_all();
}

void Recording::RunWriter() {
  pthread_setname_np(pthread_self(), "sv-recorder");
  BatchWriter writer;
  std::optional<std::string> wrong = writer.Create(options_.path);
  for (bool is_last = false; !wrong && !is_last;) {
    {
      const MutexLock lock(mutex_);
      changed_.wait_for(mutex_, kWriteEvery,
                        [this]() SENSORVELA_REQUIRES(mutex_) { return write_now_; });
      write_now_ = false;
      is_last = is_finished_ || stopped_ != nullptr;
      if (stopped_ != nullptr) wrong = stopped_;
      std::swap(batch_, written_batch_);
      changed_.notify_all();
    }
    const auto write_error = writer.Write(*written_batch_);
    if (write_error) wrong = write_error;
    written_batch_->Clear();
  }
  const auto close_error = writer.Close();
  End(wrong ? wrong : close_error);
}

void Recording::End(const std::optional<std::string>& wrong) {
  is_active_ = false;
  if (wrong) LogEnd(options_.path, *wrong);
  const MutexLock lock(mutex_);
  is_finished_ = true;
  is_written_ = true;
  changed_.notify_all();
}

}  // namespace sensorvela::recorder
