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

/// Says in the log that there is no recording, and why.
void LogNoRecording(const std::string& path, const std::string& reason);

/// Takes in what happens to an engine, in order, and writes it with a thread of its own. Any thread
/// may call any method at any time.
///
/// Who calls the engine or records has the turn, and one thread has it at a time: a host thread
/// during its call, and the reporter thread while it takes the queue, forgets the error counts or
/// queues the atoms of an answer. So the order of the events is the order of the queue and of the
/// counts. The thread that writes holds the lock only while it takes a batch. When the batches are
/// full or the file cannot be written, the recording ends with one line in the log, and the host
/// goes on.
class Recording {
 public:
  struct Options {
    std::string path;
    /// Who records waits while the present batch has no room; the engine's end waits until all is
    /// written. For hosts in virtual time, which can be faster than any disk.
    bool waits_for_disk = false;
    Batch::Limits limits = {};
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
    const Turn turn(*this);
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
    const Turn turn(*this);
    const std::int64_t at_ns = TimedCall(call);
    if (at_ns - last_ns_ > kLongGapNs) RecordSuspension(at_ns);
    Append(trace_format::Sample{sensor, InOrder(at_ns), timestamp_ns});
  }

  /// The engine has been destroyed. Waits until all is written if the recording waits for the disk,
  /// and for a second at most if the process is ending.
  void EngineEnds() SENSORVELA_EXCLUDES(mutex_);

  /// The device has been suspended, perhaps.
  void Suspended() SENSORVELA_EXCLUDES(mutex_);

  /// The process is ending. Waits until what has been taken in is written: until the deadline, or
  /// without end if the recording waits for the disk. Waits for no other thread's turn. An engine
  /// that lives on is still recorded.
  void ProcessEnds(std::chrono::steady_clock::time_point deadline) SENSORVELA_EXCLUDES(mutex_);

  // Called by the engine's reporter thread.

  void ServiceFoundDeclared() SENSORVELA_EXCLUDES(mutex_);
  /// The thread takes the queue next, and has the turn until its lookup begins.
  void DrainBegins() SENSORVELA_EXCLUDES(mutex_) { TakeTurn(); }
  void LookupBegins() SENSORVELA_EXCLUDES(mutex_);
  void LookupEnds(bool found) SENSORVELA_EXCLUDES(mutex_);
  /// A report has ended with a status.
  void ReportEnds(bool is_ok) SENSORVELA_EXCLUDES(mutex_);
  /// The engine logs an error.
  void EngineLogsError() SENSORVELA_EXCLUDES(mutex_);

  /// The thread forgets the error counts next, and has the turn until its first question.
  void CycleEndBegins() SENSORVELA_EXCLUDES(mutex_) { TakeTurn(); }
  void CycleEndEnds() SENSORVELA_EXCLUDES(mutex_) { EndTurn(); }
  /// The engine asks the supplier. The first question is the sign that a cycle has ended. The
  /// thread gives up the turn if it `waits` for an answer.
  void SupplierIsAsked(bool is_first, bool waits) SENSORVELA_EXCLUDES(mutex_);
  /// The supplier has answered: `write` adds the answer to the line. The thread has the turn until
  /// its next question or the end of the cycle, so that the answer's atoms are queued together.
  template <typename Write>
  void SupplierAnswers(const Write& write) SENSORVELA_EXCLUDES(mutex_) {
    TakeTurn();
    RecordAnswer(write);
  }

 private:
  /// Has the turn while it exists. In a thread that has it already, it changes nothing.
  class SENSORVELA_SCOPED_CAPABILITY Turn {
   public:
    explicit Turn(Recording& recording) SENSORVELA_ACQUIRE(recording.mutex_)
        : recording_(recording), is_taken_(recording.TakeTurn()) {}
    ~Turn() SENSORVELA_RELEASE() {
      if (is_taken_) recording_.EndTurn();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    Recording& recording_;
    const bool is_taken_;
  };

  /// A gap between samples that is worth a look at the clocks.
  static constexpr std::int64_t kLongGapNs = 100'000'000;
  /// A killed process loses no more than this.
  static constexpr std::chrono::milliseconds kWriteEvery{500};
  /// An engine that is destroyed while the process ends waits so long for the disk.
  static constexpr std::chrono::seconds kExitWait{1};

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

  // The turn is the lock, which the reporter thread also holds from one method to the next.

  /// False if the thread has it already.
  bool TakeTurn() SENSORVELA_NO_THREAD_SAFETY_ANALYSIS {
    ThreadState& thread = ThisThread();
    if (thread.turn_of == this) return false;
    thread.turn_of = this;  // First: a signal's handler may end the process at any instant.
    mutex_.lock();
    while (is_interrupted_) changed_.wait(mutex_);
    return true;
  }
  /// Does nothing if the thread has not got it.
  void EndTurn() SENSORVELA_NO_THREAD_SAFETY_ANALYSIS {
    ThreadState& thread = ThisThread();
    if (thread.turn_of != this) return;
    mutex_.unlock();
    thread.turn_of = nullptr;
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

  template <typename Write>
  void RecordAnswer(const Write& write) SENSORVELA_EXCLUDES(mutex_) {
    const Turn turn(*this);
    EventLine line(InOrder(NowNs()), trace_format::event::kSupplierAnswers);
    write(line);
    Append(line);
  }
  void RecordSuspension() SENSORVELA_REQUIRES(mutex_) { RecordSuspension(NowNs()); }
  void RecordSuspension(std::int64_t until_ns) SENSORVELA_REQUIRES(mutex_);
  void Append(EventLine& line) SENSORVELA_REQUIRES(mutex_);
  void Append(const trace_format::Sample& sample) SENSORVELA_REQUIRES(mutex_);
  void RecordLookupThatWaits() SENSORVELA_REQUIRES(mutex_);
  void RecordReportsSoFar() SENSORVELA_REQUIRES(mutex_);
  template <typename Item>
  void AddToBatch(const Item& item) SENSORVELA_REQUIRES(mutex_);
  /// Waits until the batch is empty. Nobody else has the turn meanwhile.
  void WaitForWriter() SENSORVELA_REQUIRES(mutex_);
  void WakeWriter() SENSORVELA_REQUIRES(mutex_);
  /// Takes nothing more in, for this reason.
  void Stop(const char* reason) SENSORVELA_REQUIRES(mutex_);
  void EngineStarts(std::string_view supplier) SENSORVELA_EXCLUDES(mutex_);

  void RunWriter() SENSORVELA_EXCLUDES(mutex_);
  /// What the writer takes.
  struct Taken {
    bool is_last;
    /// Why the recording has stopped; null if it has not.
    const char* stopped;
    /// The requests that are served when the batch is written.
    int requests;
  };
  /// Waits for something to write, and exchanges the batches.
  Taken TakeBatch() SENSORVELA_EXCLUDES(mutex_);
  /// Ends the recording for good, with the line in the log if something is `wrong`.
  void End(const std::optional<std::string>& wrong) SENSORVELA_EXCLUDES(mutex_);
  /// Returns when the writer has ended or has served the request with that number, or at the
  /// deadline, if there is one.
  void AwaitWriter(int request, std::optional<std::chrono::steady_clock::time_point> deadline)
      SENSORVELA_EXCLUDES(written_mutex_);

  const Options options_;
  std::atomic<bool> is_active_ = true;
  std::atomic<bool> is_written_ = false;
  std::atomic<bool> process_ends_ = false;

  platform::Mutex mutex_;
  std::condition_variable_any changed_;
  /// The batch that is filled; the writer has another.
  std::unique_ptr<Batch> batch_ SENSORVELA_GUARDED_BY(mutex_) =
      std::make_unique<Batch>(options_.limits);
  /// The batch that is written. Used by the writer alone, who exchanges it.
  std::unique_ptr<Batch> written_batch_ = std::make_unique<Batch>(options_.limits);
  /// Why the recording has stopped; null while it has not.
  const char* stopped_ SENSORVELA_GUARDED_BY(mutex_) = nullptr;
  bool is_finished_ SENSORVELA_GUARDED_BY(mutex_) = false;
  /// At first for the first lines: a host that is killed at once leaves a recording.
  bool write_now_ SENSORVELA_GUARDED_BY(mutex_) = true;
  /// The thread that has the turn waits for the writer.
  bool is_interrupted_ SENSORVELA_GUARDED_BY(mutex_) = false;

  ClockOffset clock_offset_ SENSORVELA_GUARDED_BY(mutex_);
  std::int64_t last_ns_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// The reports that have ended since the engine's start.
  std::int64_t reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// How many of them the recording tells of.
  std::int64_t recorded_reports_ SENSORVELA_GUARDED_BY(mutex_) = 0;
  /// When the lookup began that has not ended, while nothing has been recorded since.
  std::optional<std::int64_t> lookup_began_ns_ SENSORVELA_GUARDED_BY(mutex_);
  bool is_looking_up_ SENSORVELA_GUARDED_BY(mutex_) = false;
  bool found_service_ SENSORVELA_GUARDED_BY(mutex_) = false;
  /// The engine will log the report that has just failed.
  bool expects_error_line_ SENSORVELA_GUARDED_BY(mutex_) = false;

  /// The requests of the process's end to write what there is, and how many of them have been
  /// served. They are made without `mutex_`, which may never become free then.
  std::atomic<int> requests_ = 0;
  std::atomic<int> served_requests_ = 0;
  /// For those who wait for the writer. No other lock is taken while it is held.
  platform::Mutex written_mutex_;
  std::condition_variable_any written_changed_;
};

}  // namespace sensorvela::recorder

#include "platform/thread_annotations_end.h"
