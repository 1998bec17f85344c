// The engines that the benchmarks measure, and the service to which they report.
#pragma once

#include <aidl/android/frameworks/stats/BnStats.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::benchmarks {

using aidl::android::frameworks::stats::BnStats;
using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;

/// Does nothing, so that nothing of it is measured: the kit's service copies each atom.
class NoOpService : public BnStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& /*atom*/) override {
    return ndk::ScopedAStatus::ok();
  }
};

/// Counts the reports, so that a thread can wait for them.
class CountingService : public BnStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& /*atom*/) override {
    reports.fetch_add(1, std::memory_order_relaxed);
    return ndk::ScopedAStatus::ok();
  }

  std::atomic<std::int64_t> reports = 0;
};

/// Starts an engine that reports to `service`, as long as no other engine has been started.
std::unique_ptr<SensorVela> StartEngine(
    std::shared_ptr<IStats> service = ndk::SharedRefBase::make<NoOpService>());

/// An engine whose reporter thread is blocked in a report, except during `Drain` and `Empty`.
class BlockedEngine {
 public:
  BlockedEngine();
  ~BlockedEngine();

  SensorVela& operator*() { return *engine_; }
  SensorVela* operator->() { return engine_.get(); }

  /// Waits until all queued atoms have been reported, and returns how long that took.
  std::chrono::nanoseconds Drain();
  /// Waits until all queued atoms have been reported and freed.
  void Empty();

  /// A service like the engine's own, which ignores reports unless it blocks.
  static std::shared_ptr<IStats> NewService();

 private:
  class Service;

  const std::shared_ptr<Service> service_;
  const std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::benchmarks
