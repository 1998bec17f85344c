// The engines that are measured, and the service that they report to.
#pragma once

#include <aidl/android/frameworks/stats/IStats.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::benchmarks {

using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;

/// An engine whose service takes atoms and does nothing.
std::unique_ptr<SensorVela> StartEngine();

/// A service that does nothing, but for the plugs: the report of a plug ends when the next one is
/// on its way.
class PluggedService : public IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override;

  /// Queues a plug and returns when the engine reports it; all that was queued before it has been
  /// reported then.
  void Plug(SensorVela& engine);
  /// Lets the last plug through.
  void Unplug();
  /// How long the engine was busy between the last two plugs.
  std::chrono::nanoseconds TimeBetweenPlugs();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t queued_ = 0;
  std::uint64_t reached_ = 0;
  bool unplugged_ = false;
  std::chrono::steady_clock::time_point released_;
  std::chrono::nanoseconds between_plugs_{};
};

/// An engine whose reporter thread is busy in a report, but for the time of `Drain` and `Empty`.
class BusyEngine {
 public:
  BusyEngine();
  ~BusyEngine();
  BusyEngine(const BusyEngine&) = delete;
  BusyEngine& operator=(const BusyEngine&) = delete;

  SensorVela& operator*() { return *engine_; }
  SensorVela* operator->() { return engine_.get(); }

  /// Has all that is queued sent, and says how long that took.
  std::chrono::nanoseconds Drain();
  /// Has all that is queued sent and freed.
  void Empty();

 private:
  const std::shared_ptr<PluggedService> service_;
  const std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::benchmarks
