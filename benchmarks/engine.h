// The engines that the benchmarks measure, and the service to which they report.
#pragma once

#include <aidl/android/frameworks/stats/BnStats.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::benchmarks {

using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;

/// Starts an engine whose service ignores every report.
std::unique_ptr<SensorVela> StartEngine();

/// Starts an engine that reports to `service`, as long as no other engine has been started.
std::unique_ptr<SensorVela> StartEngine(std::shared_ptr<IStats> service);

/// A service that ignores every report, except the reports of marker atoms: these block.
class BlockingService : public BnStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override;

  /// Queues a marker, unblocks the report of the previous one, and waits until the report of the
  /// new one blocks. By then all atoms queued before it have been reported.
  void Block(SensorVela& engine);
  /// Unblocks the report of the last marker.
  void Unblock();
  /// The time between the last two markers: from the end of the first one's report to the beginning
  /// of the second one's.
  std::chrono::nanoseconds TimeBetweenMarkers();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t markers_queued_ = 0;
  std::uint64_t markers_reached_ = 0;
  bool unblocked_ = false;
  std::chrono::steady_clock::time_point last_marker_end_;
  std::chrono::nanoseconds time_between_markers_{};
};

/// An engine whose reporter thread is blocked in a report, except during `Drain` and `Empty`.
class BlockedEngine {
 public:
  BlockedEngine();
  ~BlockedEngine();
  BlockedEngine(const BlockedEngine&) = delete;
  BlockedEngine& operator=(const BlockedEngine&) = delete;

  SensorVela& operator*() { return *engine_; }
  SensorVela* operator->() { return engine_.get(); }

  /// Waits until all queued atoms have been reported, and returns how long that took.
  std::chrono::nanoseconds Drain();
  /// Waits until all queued atoms have been reported and freed.
  void Empty();

 private:
  const std::shared_ptr<BlockingService> service_;
  const std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::benchmarks
