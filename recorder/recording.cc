#include "recorder/recording.h"

#include <android/log.h>
#include <pthread.h>
#include <signal.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <limits>
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

/// So much of a path leaves room for the reason in a line of the log.
constexpr int kMaxPathBytes = 512;

/// A request that is never served: only the writer's end is awaited.
constexpr int kUntilWritten = std::numeric_limits<int>::max();

void Log(const char* format, const std::string& path, const std::string& reason) {
  __android_log_print(ANDROID_LOG_ERROR, kLogTag, format, kMaxPathBytes, path.c_str(),
                      reason.c_str());
}

void LogEnd(const std::string& path, const std::string& reason) {
  Log("The recording %.*s has ended: %s.", path, reason);
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

void LogNoRecording(const std::string& path, const std::string& reason) {
  Log("There is no recording %.*s: %s.", path, reason);
}

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
  const Turn turn(*this);
  last_ns_ = std::max<std::int64_t>(NowNs(), 0);
  clock_offset_.TakeSuspension();
  Append(EventLine(last_ns_, event::kRecording).Integer(field::kVersion, 1));
  Append(EventLine(last_ns_, event::kEngineStart).Text(field::kSupplier, supplier));
}

void Recording::EngineEnds() {
  {
    const Turn turn(*this);
    RecordSuspension();
    Append(EventLine(InOrder(NowNs()), event::kEnd).Integer(field::kReports, reports_));
    is_finished_ = true;
    WakeWriter();
  }
  if (options_.waits_for_disk) {
    AwaitWriter(kUntilWritten, std::nullopt);
  } else if (process_ends_) {
    AwaitWriter(kUntilWritten, std::chrono::steady_clock::now() + kExitWait);
  }
}

void Recording::Suspended() {
  const Turn turn(*this);
  RecordSuspension();
}

void Recording::ProcessEnds(std::chrono::steady_clock::time_point deadline) {
  // If this thread ends the process in a call of the engine, the call never returns.
  if (ThisThread().is_in_engine) EndTurn();
  // If a signal has interrupted it while it recorded, the writer may wait for it without end.
  const bool is_bounded = !options_.waits_for_disk || ThisThread().turn_of == this;
  process_ends_ = true;
  const int request = ++requests_;
  changed_.notify_all();
  AwaitWriter(request, is_bounded ? std::optional(deadline) : std::nullopt);
}

void Recording::AwaitWriter(int request,
                            std::optional<std::chrono::steady_clock::time_point> deadline) {
  const auto is_done = [&] { return is_written() || served_requests_ >= request; };
  const MutexLock lock(written_mutex_);
  if (deadline) {
    written_changed_.wait_until(written_mutex_, *deadline, is_done);
  } else {
    written_changed_.wait(written_mutex_, is_done);
  }
}

void Recording::ServiceFoundDeclared() {
  const Turn turn(*this);
  EventLine line(InOrder(NowNs()), event::kServiceFoundDeclared);
  Append(line);
}

void Recording::LookupBegins() {
  {
    const Turn turn(*this);
    RecordSuspension();
    lookup_began_ns_ = InOrder(NowNs());
    is_looking_up_ = true;
  }
  EndTurn();
}

void Recording::LookupEnds(bool found) {
  const Turn turn(*this);
  // A service in the host's own process may make an interface of its own while it takes a report.
  if (!std::exchange(is_looking_up_, false)) return;
  lookup_began_ns_.reset();
  found_service_ = found;
  expects_error_line_ = false;
  RecordSuspension();
  Append(EventLine(InOrder(NowNs()), found ? event::kLookupFound : event::kLookupFoundNone)
             .Integer(field::kReports, reports_));
  recorded_reports_ = reports_;
}

void Recording::ReportEnds(bool is_ok) {
  const Turn turn(*this);
  ++reports_;
  if (is_ok) return;
  expects_error_line_ = true;
  Append(EventLine(InOrder(NowNs()), event::kReportFailed).Integer(field::kReport, reports_));
}

void Recording::EngineLogsError() {
  const Turn turn(*this);
  // After a lookup that found the service, only a failed report is an error.
  if (!found_service_ || std::exchange(expects_error_line_, false)) return;
  ++reports_;
  Append(EventLine(InOrder(NowNs()), event::kReportSilent).Integer(field::kReport, reports_));
}

void Recording::SupplierIsAsked(bool is_first, bool waits) {
  if (is_first) {
    const Turn turn(*this);
    RecordSuspension();
    EventLine line(InOrder(NowNs()), event::kCycleEnded);
    Append(line);
  }
  if (waits) EndTurn();
}

std::int64_t Recording::NowNs() { return android::elapsedRealtimeNano(); }

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
  bool is_added = batch_->Add(item);
  if (!is_added && options_.waits_for_disk && batch_->CanHold(item)) {
    WaitForWriter();
    is_added = batch_->Add(item);
  }
  if (!is_added) {
    Stop(batch_->CanHold(item) ? "the host is faster than the disk" : "an event is too large");
  } else if (batch_->IsHalfFull()) {
    WakeWriter();
  }
}

void Recording::WaitForWriter() {
  is_interrupted_ = true;
  WakeWriter();
  while (!batch_->IsEmpty() && !is_finished_) changed_.wait(mutex_);
  is_interrupted_ = false;
  changed_.notify_all();
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
    const Taken taken = TakeBatch();
    is_last = taken.is_last;
    if (taken.stopped != nullptr) wrong = taken.stopped;
    const auto write_error = writer.Write(*written_batch_);
    if (write_error) wrong = write_error;
    written_batch_->Clear();
    const MutexLock lock(written_mutex_);
    served_requests_ = taken.requests;
    written_changed_.notify_all();
  }
  const auto close_error = writer.Close();
  End(wrong ? wrong : close_error);
}

Recording::Taken Recording::TakeBatch() {
  const MutexLock lock(mutex_);
  changed_.wait_for(mutex_, kWriteEvery, [this]() SENSORVELA_REQUIRES(mutex_) {
    return write_now_ || requests_ != served_requests_;
  });
  write_now_ = false;
  RecordReportsSoFar();
  const Taken taken = {is_finished_ || stopped_ != nullptr, stopped_, requests_};
  std::swap(batch_, written_batch_);
  changed_.notify_all();
  return taken;
}

// Nothing else tells what a host that is killed later has reported.
void Recording::RecordReportsSoFar() {
  if (is_finished_ || std::exchange(recorded_reports_, reports_) == reports_) return;
  EventLine line(last_ns_, event::kReportsSoFar);
  batch_->Add(std::string_view(line.Integer(field::kReports, reports_).Finish()));
}

void Recording::End(const std::optional<std::string>& wrong) {
  is_active_ = false;
  if (wrong) LogEnd(options_.path, *wrong);
  {
    const MutexLock lock(mutex_);
    is_finished_ = true;
    changed_.notify_all();
  }
  const MutexLock lock(written_mutex_);
  is_written_ = true;
  written_changed_.notify_all();
}

}  // namespace sensorvela::recorder
