// The library's one object: a host creates a `SensorVela` and calls a method of it for each event
// of the sensor stack.
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

/// Reports the health and usage of the sensor stack to the platform's stats service.
///
/// Each event becomes at most one vendor atom, which is queued; the engine's own reporter thread
/// sends the queue to the service in order. Every cycle (six hours, longer while atoms keep
/// arriving) it also asks the supplier for diagnostics and sends those.
///
/// Threads: every public method may be called from any thread at any time between the end of
/// construction and the start of destruction. None waits for the stats service, fails, or validates
/// an argument: every value is safe and is passed on as it is.
///
/// Failures are written to the Android log (tag "sensor-vela") and the atom concerned is dropped.
/// The queue has no limit: while the service is declared but absent it grows with every atom.
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

  /// Names a sensor. The host assigns both halves; the engine gives them no meaning.
  struct SensorId {
    std::uint32_t high = 0;
    std::int32_t low = 0;
  };
  static_assert(sizeof(SensorId) == 8 && offsetof(SensorId, low) == 4);

  /// A proximity status report. Its producer gives the fields their meaning.
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

  // The diagnostics records. Their supplier gives the fields their meaning; only the low 32 bits of
  // a 64-bit field reach the stats service.

  struct ProcessorDiag {
    std::int64_t value_1 = 0;
    std::int64_t value_2 = 0;
    std::int64_t value_3 = 0;
    std::int64_t value_4 = 0;
  };
  static_assert(sizeof(ProcessorDiag) == 32);

  /// The stress of one system queue; the operation that returns it says which.
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

  /// One of two memory reports: `kind` says which, and the other one's fields are ignored.
  struct MemoryPressure {
    /// The `kind` of a report of memory serviceability; every other value is one of memory
    /// pressure.
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

  /// What the host implements to hand over diagnostics, first generation: every item has a value.
  ///
  /// The engine calls each operation once per cycle, in the order declared, one at a time, on its
  /// reporter thread only and with none of its locks held, so an implementation may take its time
  /// and may call the engine, but not destroy it. It must not throw: the library has no exceptions.
  /// It needs locking of its own only against the host's other threads. The engine deletes the
  /// supplier when it is destroyed, after the last call.
  class SystemDiagnosticsSupplier {
   public:
    virtual ~SystemDiagnosticsSupplier() = default;
    virtual ProcessorDiag GetProcessorDiagnostics() = 0;
    virtual QueueStress GetQueueStressType1() = 0;
    virtual QueueStress GetQueueStressType2() = 0;
    virtual QueueStress GetQueueStressType3() = 0;
  };

  /// The second generation, with the same promises: every item may be absent (null or an empty
  /// list), which yields no atom. The engine frees each result when the upload that asked for it
  /// ends.
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

  /// Takes the supplier over, leaves `supplier` null, and starts the reporter thread. Contacts no
  /// service and does not wait. A null supplier is accepted: there are no diagnostics then.
  ///
  /// The one failure: when the system refuses the thread, the standard library's
  /// `std::system_error` reaches the caller with the system's error code. The supplier is lost
  /// then, and with it the little memory of the engine that did not come to be.
  explicit SensorVela(std::unique_ptr<SystemDiagnosticsSupplier>&& supplier);
  explicit SensorVela(std::unique_ptr<SystemDiagnosticsSupplierV2>&& supplier);

  SensorVela(const SensorVela&) = delete;
  SensorVela& operator=(const SensorVela&) = delete;

  /// Stops the reporter thread, waits until it has finished the step it is in, and discards the
  /// atoms still queued. A thread that is blocked in the service manager holds it up until that
  /// call returns.
  ~SensorVela();

  /// Queues a copy of `atom`. Atoms are sent in the order in which they were queued.
  void ReportVendorAtomAsync(const VendorAtom& atom);

  /// A call into the sensors HAL failed with `error`. At most 10 atoms are sent per `call`
  /// and cycle, over all sensors and errors; later occurrences are only logged.
  void LogSensorHalError(SensorId sensor, HalCall call, int error);

  /// A sensor failed while it ran. Capped like HAL errors, per `type`, and counted apart from them.
  void LogSensorRuntimeError(SensorId sensor, ErrorType type, int code);

  // Times are nanoseconds of `android::elapsedRealtimeNano()`; differences of times wrap.

  /// The sensor was enabled with this sampling period. Starts its status afresh: counts that no
  /// disable has reported are discarded.
  void ReportHalSensorEnabled(SensorId sensor, long long sampling_period_ns);

  /// The sensor was disabled. Reports its status since the last enable and leaves it as it is:
  /// samples that follow add to it until the next enable.
  void ReportHalSensorDisabled(SensorId sensor);

  /// The sensor delivered a sample that bears this timestamp; to be called once for each. Counts
  /// its latency (arrival minus timestamp) and its lateness: whether it follows the sample before
  /// it, or the enable, by more than 1.1 sampling periods. The first sample after an enable is
  /// reported.
  ///
  /// This is the sample path: one lock, one clock reading and, once the sensor is known, one hash
  /// lookup and no allocation, but for the one atom of a first sample.
  void LogSensorLatency(SensorId sensor, long long timestamp_ns);

  /// A sensor's first sample arrived this long after its enable. `LogSensorLatency` reports it by
  /// itself.
  void ReportFirstSample(SensorId sensor, long long latency_ns);

  /// A proximity status report; every bit of it is passed on.
  void LogSensorProxEvent(const TarnVelaProxEvent& event);

  /// An operation of the sensors HAL took this long on the sensor.
  void ReportHalLatency(HalOperation operation, SensorId sensor, long long latency_ns);

  /// A sensor firmware changed its state. The host gives the two integers their meaning.
  void ReportFirmwareState(int subject_id, FirmwareState state, int detail_code);

  // The atom of one diagnostics record each, for a host that sends diagnostics of its own. No
  // engine is involved: they may be called from any thread at any time.

  static VendorAtom ProcessorDiagnosticsAtom(const ProcessorDiag& diag);
  static VendorAtom SystemQueueStressAtom(QueueType queue_type, const QueueStress& stress);
  static VendorAtom IpcErrorRateAtom(const IpcErrorRate& rate);
  /// A report of memory pressure, whatever the record's `kind`.
  static VendorAtom MemoryPressureAtom(const MemoryPressure& memory);
  static VendorAtom SensorUsageAtom(const SensorUsage& usage);
  static VendorAtom GatingContextAtom(const GatingContext& context);
  static VendorAtom DramExceptionAtom(const DramException& exception);
  static VendorAtom AadProxStatsAtom(const AadProxStats& stats);
  /// Statistics of memory serviceability, whatever the record's `kind`. The total of the allocation
  /// counts wraps.
  static VendorAtom MemServiceabilityAtom(const MemoryPressure& memory);

 private:
  friend class SensorVelaTestPeer;

  /// From one end of a cycle to the next, at least.
  static constexpr std::chrono::nanoseconds kCyclePeriod = std::chrono::hours(6);
  static constexpr std::uint32_t kErrorCapPerCycle = 10;

  /// Errors are counted by family and enumerator: the upper and the lower half of the count's key.
  enum ErrorFamily : std::uint32_t { kHalErrorFamily = 1, kRuntimeErrorFamily = 2 };

  /// What is known of one sensor since it was last enabled; all zero in a new entry.
  struct PerSensorStatus {
    std::array<std::uint32_t, 5> latency_buckets;
    std::uint32_t sample_count;
    std::uint32_t late_sample_count;
    std::int64_t gap_threshold_ns;
    std::int64_t enable_time_ns;
    std::int64_t last_sample_time_ns;
  };
  static_assert(sizeof(PerSensorStatus) == 56 && offsetof(PerSensorStatus, gap_threshold_ns) == 32);

  // The reporter thread's own operations.

  /// The thread's body: waits for the stats service, then sends and sleeps until told to stop.
  void RunReporterThread() SENSORVELA_EXCLUDES(queue_mutex_, error_counts_mutex_);

  /// Sends everything queued at this moment; drops it if there is no service.
  void DrainAtomQueue() SENSORVELA_EXCLUDES(queue_mutex_);

  /// Waits until the stats service is up, if the device declares one, and logs what came of it.
  void WaitForStatsService() const;

  /// Asks the supplier for everything that it offers and queues one atom for each record.
  void UploadDiagnostics() SENSORVELA_EXCLUDES(queue_mutex_);

  /// Makes sure that the sensor has a status.
  void EnsureSensorEntryInStatus(SensorId sensor) SENSORVELA_REQUIRES(status_mutex_);

  /// The sensor's status, which is all zero if there was none. Good until the lock is released.
  [[gnu::visibility("hidden")]] PerSensorStatus& StatusOf(SensorId sensor)
      SENSORVELA_REQUIRES(status_mutex_);

  [[gnu::visibility("hidden")]] void UploadFrom(SystemDiagnosticsSupplier& supplier)
      SENSORVELA_EXCLUDES(queue_mutex_);
  [[gnu::visibility("hidden")]] void UploadFrom(SystemDiagnosticsSupplierV2& supplier)
      SENSORVELA_EXCLUDES(queue_mutex_);

  [[gnu::visibility("hidden")]] void Start();
  [[gnu::visibility("hidden")]] bool StopRequested() SENSORVELA_EXCLUDES(queue_mutex_);

  /// Queues `atom`, which nobody needs any more.
  [[gnu::visibility("hidden")]] void Enqueue(VendorAtom&& atom) SENSORVELA_EXCLUDES(queue_mutex_);

  /// Counts one more occurrence of the error. False, and logged, past the cap.
  [[gnu::visibility("hidden")]] bool CountError(ErrorFamily family, std::int32_t enumerator)
      SENSORVELA_EXCLUDES(error_counts_mutex_);

  // The supplier is declared before the queue, and so outlives it and the thread that calls it.

  const std::string stats_service_name_;

  std::unordered_map<std::uint64_t, PerSensorStatus> sensor_status_
      SENSORVELA_GUARDED_BY(status_mutex_);
  /// May be held while `queue_mutex_` is taken, never the other way round.
  sensorvela::platform::Mutex status_mutex_ SENSORVELA_ACQUIRED_BEFORE(queue_mutex_);

  const std::unique_ptr<SystemDiagnosticsSupplier> diagnostics_supplier_;
  const std::unique_ptr<SystemDiagnosticsSupplierV2> diagnostics_supplier_v2_;

  /// Started last, when every other field is in place.
  std::thread reporter_thread_;

  /// Grows by blocks: no caller waits while a long queue is moved to larger storage.
  std::deque<VendorAtom> atom_queue_ SENSORVELA_GUARDED_BY(queue_mutex_);
  sensorvela::platform::Mutex queue_mutex_;
  /// Notified with `queue_mutex_` held; only the reporter thread waits on it.
  sensorvela::platform::CondVar queue_cv_;
  bool stop_requested_ SENSORVELA_GUARDED_BY(queue_mutex_) = false;

  std::unordered_map<std::uint64_t, std::uint32_t> error_counts_
      SENSORVELA_GUARDED_BY(error_counts_mutex_);
  /// Never held together with another lock of the engine.
  sensorvela::platform::Mutex error_counts_mutex_;
};

#include "../platform/thread_annotations_end.h"
