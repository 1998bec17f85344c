// `SensorVela`: a host creates one and calls a method of it for each event of the sensor stack.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "../atoms/diagnostics_atoms.h"
#include "../atoms/sensor_event_atoms.h"
#include "../platform/sync.h"

#include "../platform/thread_annotations.h"

// The caller must hold none of the engine's locks. Only the engine's own code can hold one.
#define SENSORVELA_NO_LOCK_HELD \
  SENSORVELA_EXCLUDES(status_mutex_, queue_mutex_, error_counts_mutex_)

/// Reports the health and usage of the sensor stack to the platform's stats service.
///
/// The engine turns each event into at most one vendor atom and queues it. Its own reporter thread
/// sends the queued atoms to the service in order. At the end of each cycle (six hours, longer
/// while atoms keep arriving) the thread also gets diagnostics from the host's supplier and sends
/// them.
///
///     SensorVela engine(std::make_unique<Diagnostics>());
///     const SensorVela::SensorId accelerometer = {0x10, 1};
///     engine.ReportHalSensorEnabled(accelerometer, 20'000'000);  // A sample every 20 ms.
///     engine.LogSensorLatency(accelerometer, android::elapsedRealtimeNano());
///     engine.LogSensorHalError(accelerometer, SensorVela::HalCall{3}, -22);
///     engine.ReportHalSensorDisabled(accelerometer);
///
/// Threads: every public method may be called from any thread at any time between the end of
/// construction and the start of destruction. No method waits for the stats service, fails, or
/// validates an argument: every value is safe and is passed on unchanged.
///
/// Clocks: a cycle is six hours of the monotonic clock, which stands still while the device is
/// suspended. Timestamps and latencies are on elapsed realtime, which goes on.
///
/// The engine writes each failure to the Android log (tag "sensor-vela") and drops the atom
/// concerned. The queue has no limit: while the service is absent, whether the device declares it
/// or not, the queue grows with every atom.
class [[gnu::visibility("default")]] SensorVela {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;
  using HalCall =
      android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorHalErrorDetected::HalCall;
  using ErrorType =
      android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorRuntimeErrorDetected::ErrorType;
  using HalOperation =
      android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorHalLatencyRecorded::Operation;
  using FirmwareState =
      android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorFirmwareStateChanged::State;
  using QueueType = android::hardware::halvard::orrin::vendor::OrrinAtoms::
      SensorSystemQueueStressReported::QueueType;

  /// Identifies a sensor. The host assigns both halves; the engine does not interpret them.
  struct SensorId {
    std::uint32_t high = 0;
    std::int32_t low = 0;
  };
  static_assert(sizeof(SensorId) == 8 && offsetof(SensorId, low) == 4);

  /// A proximity status report. Its producer defines what the fields mean.
  struct TarnVelaProxEvent {
    std::int32_t int_0 = 0;
    std::int32_t int_1 = 0;
    std::int32_t int_2 = 0;
    std::int32_t int_3 = 0;
    std::int32_t int_4 = 0;
    std::int32_t int_5 = 0;
    std::int32_t int_6 = 0;
    std::int32_t int_7 = 0;
    float float_0 = 0;
    float float_1 = 0;
    float float_2 = 0;
    float float_3 = 0;
    std::int32_t int_8 = 0;
    std::int32_t int_9 = 0;
    float float_4 = 0;
    float float_5 = 0;
    float float_6 = 0;
  };
  static_assert(sizeof(TarnVelaProxEvent) == 68 && offsetof(TarnVelaProxEvent, int_8) == 48);

  // The diagnostics records. The supplier defines what the fields mean; only the low 32 bits of a
  // 64-bit field reach the stats service.

  struct ProcessorDiag {
    std::int64_t value_1 = 0;
    std::int64_t value_2 = 0;
    std::int64_t value_3 = 0;
    std::int64_t value_4 = 0;
  };
  static_assert(sizeof(ProcessorDiag) == 32);

  /// The stress of one system queue; which one depends on the operation that returns it.
  struct QueueStress {
    std::int64_t value_1 = 0;
    std::int64_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
    std::int64_t value_5 = 0;
    std::int64_t value_6 = 0;
  };
  static_assert(sizeof(QueueStress) == 40 && offsetof(QueueStress, value_5) == 24);

  struct IpcErrorRate {
    std::int32_t value_1 = 0;
    std::int32_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
  };

  /// A report of memory pressure or of memory serviceability. `kind` says which of the two; the
  /// fields of the other are ignored.
  struct MemoryPressure {
    /// The `kind` of a memory serviceability report; every other value means memory pressure.
    static constexpr std::uint8_t kServiceability = 1;

    std::int32_t shared_value = 0;
    std::int32_t pressure_value_1 = 0;
    std::int32_t pressure_value_2 = 0;
    std::int32_t pressure_value_3 = 0;
    float pressure_value_4 = 0;
    std::uint8_t kind = 0;
    std::int32_t serviceability_value_1 = 0;
    std::int32_t serviceability_value_2 = 0;
    std::array<std::int32_t, 20> bucket_allocation_count{};
    std::array<std::int32_t, 20> bucket_duration_ms{};
  };
  static_assert(sizeof(MemoryPressure) == 192 &&
                offsetof(MemoryPressure, bucket_allocation_count) == 32);

  struct SensorUsage {
    std::int32_t value_1 = 0;
    std::int32_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
    std::int32_t value_5 = 0;
    std::int32_t value_6 = 0;
    std::int32_t value_7 = 0;
  };

  struct GatingContext {
    std::int32_t value_1 = 0;
    std::int32_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
    std::int32_t value_5 = 0;
    std::int32_t value_6 = 0;
    std::int32_t value_7 = 0;
    std::int32_t value_8 = 0;
    std::int32_t value_9 = 0;
  };

  struct DramException {
    std::int32_t value_1 = 0;
    std::int32_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
    std::int32_t value_5 = 0;
  };

  struct AadProxStats {
    std::int32_t value_1 = 0;
    std::int32_t value_2 = 0;
    std::int32_t value_3 = 0;
    std::int32_t value_4 = 0;
    std::int32_t value_5 = 0;
    std::int32_t value_6 = 0;
    std::int32_t value_7 = 0;
    std::int32_t value_8 = 0;
    float value_9 = 0;
    float value_10 = 0;
    float value_11 = 0;
    float value_12 = 0;
    float value_13 = 0;
    float value_14 = 0;
    std::int32_t value_15 = 0;
    std::int32_t value_16 = 0;
    std::int32_t value_17 = 0;
    std::int32_t value_18 = 0;
    std::int32_t value_19 = 0;
    std::int32_t value_20 = 0;
  };
  static_assert(sizeof(AadProxStats) == 80 && offsetof(AadProxStats, value_15) == 56);

  /// The interface through which the host supplies diagnostics, first generation: every operation
  /// returns a value.
  ///
  /// The engine calls each operation once per cycle, in the order declared, one at a time, on its
  /// reporter thread only and with none of its locks held. An operation may therefore take long and
  /// may call the engine, but must not destroy it. It must not throw: the library is built without
  /// exceptions. The supplier needs locks only for data that it shares with the host's other
  /// threads. The engine owns the supplier and deletes it in the engine's destructor, after the
  /// last call.
  class SystemDiagnosticsSupplier {
   public:
    virtual ~SystemDiagnosticsSupplier() = default;
    virtual ProcessorDiag GetProcessorDiagnostics() = 0;
    virtual QueueStress GetQueueStressType1() = 0;
    virtual QueueStress GetQueueStressType2() = 0;
    virtual QueueStress GetQueueStressType3() = 0;
  };

  /// The second generation, with the same guarantees. An operation may also return null or an empty
  /// list; the engine then sends no atom for it. The engine frees all results at the end of the
  /// upload.
  class SystemDiagnosticsSupplierV2 {
   public:
    virtual ~SystemDiagnosticsSupplierV2() = default;
    virtual std::unique_ptr<ProcessorDiag> GetProcessorDiagnostics() = 0;
    virtual std::unique_ptr<QueueStress> GetQueueStressType1() = 0;
    virtual std::unique_ptr<QueueStress> GetQueueStressType2() = 0;
    virtual std::unique_ptr<QueueStress> GetQueueStressType3() = 0;
    virtual std::vector<IpcErrorRate> GetIpcErrorRates() = 0;
    virtual std::vector<MemoryPressure> GetMemoryPressures() = 0;
    virtual std::vector<SensorUsage> GetSensorUsages() = 0;
    virtual std::vector<GatingContext> GetGatingContexts() = 0;
    virtual std::unique_ptr<DramException> GetDramException() = 0;
    virtual std::unique_ptr<AadProxStats> GetAadProxStats() = 0;
  };

  /// Takes ownership of the supplier, leaves `supplier` null, and starts the reporter thread. Calls
  /// no service and does not wait. An engine with a null supplier sends no diagnostics.
  ///
  /// Throws the standard library's `std::system_error`, with the system's error code, when the
  /// system refuses the thread. Then the supplier, and what the unfinished engine's fields own, are
  /// not freed; the engine's own memory is the host's, and `new` frees it. There is no other
  /// failure.
  explicit SensorVela(std::unique_ptr<SystemDiagnosticsSupplier>&& supplier);
  explicit SensorVela(std::unique_ptr<SystemDiagnosticsSupplierV2>&& supplier);

  SensorVela(const SensorVela&) = delete;
  SensorVela& operator=(const SensorVela&) = delete;

  /// Stops the reporter thread, waits until it has finished its current step (a wait for the
  /// service, the sending of a batch, an upload), and discards the atoms still queued. Three things
  /// can hold the thread, and with it the destructor, without end: the service manager, while the
  /// service is not registered; the stats service's process, which each lookup asks, while it is
  /// stopped or busy, unless the host keeps a reference to the service of its own; the supplier.
  ~SensorVela();

  /// Queues a copy of `atom`. Atoms are sent in the order in which they were queued.
  void ReportVendorAtomAsync(const VendorAtom& atom) SENSORVELA_NO_LOCK_HELD;

  /// A call into the sensors HAL failed with `error`. At most 10 atoms are sent per `call` and
  /// cycle, counted over all sensors and errors; later occurrences are only logged.
  void LogSensorHalError(SensorId sensor, HalCall call, int error) SENSORVELA_NO_LOCK_HELD;

  /// A sensor failed while it ran. The same cap applies per `type`; runtime errors and HAL errors
  /// are counted separately.
  void LogSensorRuntimeError(SensorId sensor, ErrorType type, int code) SENSORVELA_NO_LOCK_HELD;

  // Times are in nanoseconds of `android::elapsedRealtimeNano()`; differences of times wrap.

  /// The sensor was enabled with this sampling period. Queues the atom and then resets the sensor's
  /// counts; those that no disable has reported are discarded. A disable on another thread can come
  /// between the two: it then reports the counts from before, after the enable's atom.
  void ReportHalSensorEnabled(SensorId sensor, long long sampling_period_ns)
      SENSORVELA_NO_LOCK_HELD;

  /// The sensor was disabled. Reports the sensor's counts since the last enable and does not reset
  /// them: later samples add to them until the next enable.
  void ReportHalSensorDisabled(SensorId sensor) SENSORVELA_NO_LOCK_HELD;

  /// The sensor delivered a sample with this timestamp; call this once for each sample. Counts the
  /// sample by its latency (the time of this call minus the timestamp), and counts it as late if
  /// its timestamp is more than 1.1 sampling periods after the previous sample's, or after the
  /// enable if there is none. Reports the first sample after an enable.
  ///
  /// This is the sample path, which a real-time thread may call. It takes one lock, which inherits
  /// priority, and reads the clock once. For a sensor that has a status already, it does one hash
  /// lookup and allocates nothing. Only a first sample also builds and queues an atom, which is one
  /// allocation. A sensor gets its status with its first enable: enable it on another thread.
  void LogSensorLatency(SensorId sensor, long long timestamp_ns) SENSORVELA_NO_LOCK_HELD;

  /// The sensor's first sample arrived `latency_ns` after its enable. `LogSensorLatency` calls this
  /// for each first sample; a host that calls `LogSensorLatency` need not.
  void ReportFirstSample(SensorId sensor, long long latency_ns)
      SENSORVELA_EXCLUDES(queue_mutex_, error_counts_mutex_);

  /// A proximity status report, passed on bit for bit.
  void LogSensorProxEvent(const TarnVelaProxEvent& event) SENSORVELA_NO_LOCK_HELD;

  /// An operation of the sensors HAL took `latency_ns` on the sensor.
  void ReportHalLatency(HalOperation operation, SensorId sensor, long long latency_ns)
      SENSORVELA_NO_LOCK_HELD;

  /// A sensor firmware changed its state. The host defines what `subject_id` and `detail_code`
  /// mean.
  void ReportFirmwareState(int subject_id, FirmwareState state, int detail_code)
      SENSORVELA_NO_LOCK_HELD;

  // Each of these builds the atom of one diagnostics record, for a host that sends its own
  // diagnostics. They use no engine and may be called from any thread at any time.

  static VendorAtom ProcessorDiagnosticsAtom(const ProcessorDiag& diag);
  static VendorAtom SystemQueueStressAtom(QueueType queue_type, const QueueStress& stress);
  static VendorAtom IpcErrorRateAtom(const IpcErrorRate& rate);
  /// The memory pressure report, whatever the record's `kind`.
  static VendorAtom MemoryPressureAtom(const MemoryPressure& memory);
  static VendorAtom SensorUsageAtom(const SensorUsage& usage);
  static VendorAtom GatingContextAtom(const GatingContext& context);
  static VendorAtom DramExceptionAtom(const DramException& exception);
  static VendorAtom AadProxStatsAtom(const AadProxStats& stats);
  /// The memory serviceability report, whatever the record's `kind`. The sum of the allocation
  /// counts wraps.
  static VendorAtom MemServiceabilityAtom(const MemoryPressure& memory);

 private:
  friend class SensorVelaTestPeer;

  /// The least time from the end of one cycle to the end of the next.
  static constexpr std::chrono::nanoseconds kCyclePeriod = std::chrono::hours(6);

  /// The upper half of the key of an error's count; the lower half is the enumerator.
  enum ErrorFamily : std::uint32_t { kHalErrorFamily = 1, kRuntimeErrorFamily = 2 };

  /// The counts and times of one sensor since its last enable; all zero in a new entry.
  struct PerSensorStatus {
    std::array<std::uint32_t, 5> latency_buckets;
    std::uint32_t sample_count;
    std::uint32_t late_sample_count;
    /// Aligned as on Arm: 32-bit x86 would align it to 4 bytes.
    alignas(8) std::int64_t gap_threshold_ns;
    std::int64_t enable_time_ns;
    std::int64_t last_sample_time_ns;
  };
  static_assert(sizeof(PerSensorStatus) == 56 && offsetof(PerSensorStatus, gap_threshold_ns) == 32);

  // The next five are called by the reporter thread only. The first three are its steps, which a
  // library that is loaded in front of this one can take the place of, as the recorder does.

  /// The thread's body: waits for the stats service, then sends and sleeps until a stop is
  /// requested.
  [[gnu::noinline]] void RunReporterThread() SENSORVELA_NO_LOCK_HELD;

  /// Sends the atoms queued at this moment, or drops them if there is no service.
  [[gnu::noinline]] void DrainAtomQueue() SENSORVELA_NO_LOCK_HELD;

  /// Forgets the error counts and uploads the diagnostics.
  [[gnu::noinline]] void EndCycle() SENSORVELA_NO_LOCK_HELD;

  /// Waits until the stats service is up, if the device declares one, and logs the result.
  void WaitForStatsService() const SENSORVELA_NO_LOCK_HELD;

  /// Calls each operation of the supplier and queues one atom for each record.
  void UploadDiagnostics() SENSORVELA_NO_LOCK_HELD;

  /// Adds an all-zero status for the sensor if it has none.
  void EnsureSensorEntryInStatus(SensorId sensor) SENSORVELA_REQUIRES(status_mutex_);

  /// The sensor's status, added all zero if there was none. Valid until the lock is released.
  [[gnu::visibility("hidden")]] PerSensorStatus& StatusOf(SensorId sensor)
      SENSORVELA_REQUIRES(status_mutex_);

  [[gnu::visibility("hidden")]] void UploadFrom(SystemDiagnosticsSupplier& supplier)
      SENSORVELA_NO_LOCK_HELD;
  [[gnu::visibility("hidden")]] void UploadFrom(SystemDiagnosticsSupplierV2& supplier)
      SENSORVELA_NO_LOCK_HELD;

  [[gnu::visibility("hidden")]] void Start();
  [[gnu::visibility("hidden")]] void RequestStop() SENSORVELA_NO_LOCK_HELD;
  [[gnu::visibility("hidden")]] bool StopRequested() SENSORVELA_NO_LOCK_HELD;

  /// Queues `atom` without a copy.
  [[gnu::visibility("hidden")]] void Enqueue(VendorAtom&& atom)
      SENSORVELA_EXCLUDES(queue_mutex_, error_counts_mutex_);

  /// Counts one more occurrence of the error. Past the cap, logs it and returns false.
  [[gnu::visibility("hidden")]] bool CountError(ErrorFamily family, std::int32_t enumerator)
      SENSORVELA_NO_LOCK_HELD;

  // The order of the fields is their layout, which is fixed. The supplier is declared before the
  // thread and the queue, so that it outlives both: the thread calls it.

  // Constant after construction.
  const std::string stats_service_name_;

  // Guarded by `status_mutex_`.
  std::unordered_map<std::uint64_t, PerSensorStatus> sensor_status_
      SENSORVELA_GUARDED_BY(status_mutex_);
  /// A thread may take `queue_mutex_` while it holds this, never the reverse.
  sensorvela::platform::Mutex status_mutex_ SENSORVELA_ACQUIRED_BEFORE(queue_mutex_);

  // Constant after construction.
  const std::unique_ptr<SystemDiagnosticsSupplier> diagnostics_supplier_;
  const std::unique_ptr<SystemDiagnosticsSupplierV2> diagnostics_supplier_v2_;
  /// Started at the end of construction, when every other field is initialized.
  std::thread reporter_thread_;

  // Guarded by `queue_mutex_`.

  /// Grows by blocks: no caller waits while a long queue is moved to larger storage.
  std::deque<VendorAtom> atom_queue_ SENSORVELA_GUARDED_BY(queue_mutex_);
  sensorvela::platform::Mutex queue_mutex_;
  /// Notified with `queue_mutex_` held; only the reporter thread waits on it.
  sensorvela::platform::CondVar queue_cv_;
  bool stop_requested_ SENSORVELA_GUARDED_BY(queue_mutex_) = false;

  // Guarded by `error_counts_mutex_`.
  std::unordered_map<std::uint64_t, std::uint32_t> error_counts_
      SENSORVELA_GUARDED_BY(error_counts_mutex_);
  /// Never held together with another lock of the engine.
  sensorvela::platform::Mutex error_counts_mutex_;
};

#undef SENSORVELA_NO_LOCK_HELD
#include "../platform/thread_annotations_end.h"
