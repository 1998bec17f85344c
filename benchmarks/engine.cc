#include "benchmarks/engine.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

namespace sensorvela::benchmarks {

std::unique_ptr<SensorVela> StartEngine(std::shared_ptr<IStats> service) {
  simulated::RegisterService(testkit::kStatsInstance, std::move(service));
  return testkit::MakeEngine(testkit::SupplierKind::kNone, nullptr);
}

/// The report of a marker blocks until `Unblock`.
class BlockedEngine::Service : public BnStats {
 public:
  static VendorAtom Marker() {
    VendorAtom marker;
    marker.atomId = kMarkerId;
    return marker;
  }

  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    if (atom.atomId == kMarkerId) {
      std::unique_lock lock(mutex_);
      time_between_markers_ = std::chrono::steady_clock::now() - last_marker_end_;
      is_blocked_ = true;
      changed_.notify_all();
      changed_.wait(lock, [this] { return !is_blocked_; });
      last_marker_end_ = std::chrono::steady_clock::now();
    }
    return ndk::ScopedAStatus::ok();
  }

  /// Waits until the report of a marker blocks, and returns the time that has passed since the
  /// report of the marker before ended.
  std::chrono::nanoseconds WaitUntilBlocked() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return is_blocked_; });
    return time_between_markers_;
  }

  void Unblock() {
    const std::lock_guard lock(mutex_);
    is_blocked_ = false;
    changed_.notify_all();
  }

 private:
  static constexpr std::int32_t kMarkerId = -1;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool is_blocked_ = false;
  std::chrono::steady_clock::time_point last_marker_end_;
  std::chrono::nanoseconds time_between_markers_{};
};

BlockedEngine::BlockedEngine()
    : service_(ndk::SharedRefBase::make<Service>()), engine_(StartEngine(service_)) {
  engine_->ReportVendorAtomAsync(Service::Marker());
  service_->WaitUntilBlocked();
}

BlockedEngine::~BlockedEngine() { service_->Unblock(); }

std::chrono::nanoseconds BlockedEngine::Drain() {
  engine_->ReportVendorAtomAsync(Service::Marker());
  service_->Unblock();
  return service_->WaitUntilBlocked();
}

void BlockedEngine::Empty() {
  Drain();
  Drain();  // Before its marker is reached, the batch of the previous marker is freed.
}

std::shared_ptr<IStats> BlockedEngine::NewService() { return ndk::SharedRefBase::make<Service>(); }

}  // namespace sensorvela::benchmarks
