// The recording of one engine.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sensorvela/engine/sensor_vela.h>

#include "platform/sync.h"
#include "recorder/batch.h"
#include "recorder/clock_offset.h"
#include "recorder/event_line.h"
#include "recorder/thread_state.h"
#include "trace_format/sample.h"
#include "trace_format/words.h"

#include "platform/thread_annotations.h"

namespace sensorvela::recorder {

/// Takes in what happens to an engine, in order, and writes it with a thread of its own. Any thread
/// may call any method at any time.
///
/// A host's call into the engine is made with the recording's lock held, so that the order of the
/// events is the order of the queue. The thread that writes holds the lock only while it takes a
/// batch. When the batches are full or the file cannot be written, the recording ends with one line
/// in the log, and the host goes on.
class Recording {
 public:
  struct Options {
    std::string path;
    /// A host thread waits while the present batch is half full; the engine's end waits until all
    /// is written. For hosts in virtual time, which can be faster than any disk.
    bool waits_for_disk = false;
  };

  /// Starts the recording of an engine, and the thread that writes it; null, with a line in the
  /// log, if the system refuses the thread or the memory. `supplier` is one of the words in
  /// `trace_format::supplier`.
  static std::shared_ptr<Recording> Start(const Options& options, std::string_view supplier);

  explicit Recording(Options options) : options_(std::move(options)) {}
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  /// False once the recording has ended, for whatever reason.
  bool is_active() const { return is_active_.load(std::memory_order_relaxed); }

  /// Nothing more will be written.
  bool is_written() const { return is_written_.load(std::memory_order_acquire); }

  // Called by the host's threads.

  /// Calls the engine and records the event that `write` adds to the line.
  template <typename Call, typename Write>
  void RecordCall(std::string_view kind, const Call& call, const Write& write)
      SENSORVELA_EXCLUDES(mutex_) {
    const platform::MutexLock lock(mutex_);
    WaitForTurn();
    RecordSuspension();
    const std::int64_t at_ns = TimedCall(call);
    EventLine line(InOrder(at_ns), kind);
    write(line);
    Append(line);
  }

  /// Calls the engine with a sample. Allocates nothing, but for the first one while a lookup waits
  /// and for one that follows a suspension.
  template <typename Call>
  void RecordSample(const Call& call, SensorVela::SensorId sensor, std::int64_t timestamp_ns)
      SENSORVELA_EXCLUDES(mutex_) {
    const platform::MutexLock lock(mutex_);
    WaitForTurn();
    const std::int64_t at_ns = TimedCall(call);
    if (at_ns - last_ns_ > kLongGapNs) RecordSuspension(at_ns);
    Append(trace_format::Sample{sensor, InOrder(at_ns), timestamp_ns});
  }

  /// The engine has been destroyed.
  void EngineEnds() SENSORVELA_EXCLUDES(mutex_);

  /// The device has been suspended, perhaps.
  void Suspended() SENSORVELA_EXCLUDES(mutex_);

  /// Writes what there is and waits for that: until the deadline, or without end if the recording
  /// waits for the disk.
  void ProcessEnds(std::chrono::steady_clock::time_point deadline) SENSORVELA_EXCLUDES(mutex_);

  // Called by the engine's reporter thread.

  void ServiceFoundDeclared() SENSORVELA_EXCLUDES(mutex_);
  void LookupBegins() SENSORVELA_EXCLUDES(mutex_);
  void LookupEnds(bool found) SENSORVELA_EXCLUDES(mutex_);
  /// A report has ended with a status.
  void ReportEnds(bool is_ok) SENSORVELA_EXCLUDES(mutex_);
  /// The engine logs an error.
  void EngineLogsError() SENSORVELA_EXCLUDES(mutex_);

  /// The engine asks the supplier. The first question is the sign that a cycle has ended.
  void SupplierIsAsked(bool is_first) SENSORVELA_EXCLUDES(mutex_);
  /// The supplier has answered: `write` adds the answer to the line. If it `has_atoms`, no host
  /// thread calls the engine before it has queued them, which is at its next question or lookup.
  template <typename Write>
  void SupplierAnswers(bool has_atoms, const Write& write) SENSORVELA_EXCLUDES(mutex_) {
    const platform::MutexLock lock(mutex_);
    EventLine line(InOrder(NowNs()), trace_format::event::kSupplierAnswers);
    write(line);
    Append(line);
    upload_holds_ = has_atoms;
  }

 private:
  /// A gap between samples that is worth a look at the clocks.
  static constexpr std::int64_t kLongGapNs = 100'000'000;
  /// A killed process loses no more than this.
  static constexpr std::chrono::milliseconds kWriteEvery{500};

  /// Elapsed realtime.
  static std::int64_t NowNs();

  /// Makes the call, and returns the engine's reading of elapsed realtime in it, or a reading after
  /// it if the engine made none.
  template <typename Call>
  static std::int64_t TimedCall(const Call& call) {
    ThreadState& thread = ThisThread();
    thread.has_reading = false;
    thread.is_in_engine = true;
    call();
    thread.is_in_engine = false;
    return thread.has_reading ? thread.reading_ns : NowNs();
  }

  /// The instant, or the last event's if that is later. The recording stops if a trace cannot have
  /// the instant.
  std::int64_t InOrder(std::int64_t at_ns) SENSORVELA_REQUIRES(mutex_) {
    if (at_ns < 0 || at_ns > trace_format::kMaxTimeNs) {
      Stop("elapsed realtime is beyond what a trace can have");
    }
    last_ns_ = std::max(last_ns_, at_ns);
    return last_ns_;
  }

  void WaitForTurn() SENSORVELA_REQUIRES(mutex_) {
    while (upload_holds_ || (options_.waits_for_disk && batch_->IsHalfFull() && !is_finished_)) {
      changed_.wait(mutex_);
    }
  }
  void ReleaseUpload() SENSORVELA_REQUIRES(mutex_);
  void RecordSuspension() SENSORVELA_REQUIRES(mutex_) { RecordSuspension(NowNs()); }
  void RecordSuspension(std::int64_t until_ns) SENSORVELA_REQUIRES(mutex_);
  void Append(EventLine& line) SENSORVELA_REQUIRES(mutex_);
  void Append(const trace_format::Sample& sample) SENSORVELA_REQUIRES(mutex_);
  void RecordLookupThatWaits() SENSORVELA_REQUIRES(mutex_);
  template <typename Item>
  void AddToBatch(const Item& item) SENSORVELA_REQUIRES(mutex_);
  void WakeWriter() SENSORVELA_REQUIRES(mutex_);
  /// Takes nothing more in, for this reason.
  void Stop(const char* reason) SENSORVELA_REQUIRES(mutex_);
  void EngineStarts(std::string_view supplier) SENSORVELA_EXCLUDES(mutex_);

  void RunWriter() SENSORVELA_EXCLUDES(mutex_);
  /// Ends the recording for good, with the line in the log if something is `wrong`.
  void End(const std::optional<std::string>& wrong) SENSORVELA_EXCLUDES(mutex_);

  const Options options_;
  std::atomic<bool> is_active_ = true;
  std::atomic<bool> is_written_ = false;

  platform::Mutex mutex_;
  std::condition_variable_any changed_;
  /// The batch that is filled; the writer has another.
  std::unique_ptr<Batch> batch_ SENSORVELA_GUARDED_BY(mutex_) = std::make_unique<Batch>();
  /// The batch that is written. Used by the writer alone, who exchanges it.
  std::unique_ptr<Batch> written_batch_ = std::make_unique<Batch>();
  /// Why the recording has stopped; null while it has not.
  const char* stopped_ SENSORVELA_GUARDED_BY(mutex_) = nullptr;
  bool is_finished_ SENSORVELA_GUARDED_BY(mutex_) = false;
  bool write_now_ SENSORVELA_GUARDED_BY(mutex_) = false;
  bool upload_holds_ SENSORVELA_GUARDED_BY(mutex_) = false;

  ClockOffset clock_offset_ SENSORVELA_GUARDED_BY(mutex_);
  std::int64_t last_ns_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// The reports that have ended since the engine's start.
  std::int64_t reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// When the lookup began that has not ended, while nothing has been recorded since.
  std::optional<std::int64_t> lookup_began_ns_ SENSORVELA_GUARDED_BY(mutex_);
  bool found_service_ SENSORVELA_GUARDED_BY(mutex_) = false;
  /// The engine will log the report that has just failed.
  bool expects_error_line_ SENSORVELA_GUARDED_BY(mutex_) = false;
};

}  // namespace sensorvela::recorder

#include "platform/thread_annotations_end.h"
