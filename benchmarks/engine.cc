#include "benchmarks/engine.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

namespace sensorvela::benchmarks {
namespace {

constexpr std::int32_t kMarkerId = -1;

/// Does nothing, so that nothing of it is measured: the kit's service copies each atom.
class NoOpService : public BnStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom&) override {
    return ndk::ScopedAStatus::ok();
  }
};

}  // namespace

std::unique_ptr<SensorVela> StartEngine(std::shared_ptr<IStats> service) {
  simulated::RegisterService(testkit::kStatsInstance, std::move(service));
  return testkit::MakeEngine(testkit::SupplierKind::kNone, nullptr);
}

std::unique_ptr<SensorVela> StartEngine() {
  return StartEngine(ndk::SharedRefBase::make<NoOpService>());
}

ndk::ScopedAStatus BlockingService::reportVendorAtom(const VendorAtom& atom) {
  if (atom.atomId == kMarkerId) {
    std::unique_lock lock(mutex_);
    const std::uint64_t number = ++markers_reached_;
    time_between_markers_ = std::chrono::steady_clock::now() - last_marker_end_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return unblocked_ || markers_queued_ > number; });
    last_marker_end_ = std::chrono::steady_clock::now();
  }
  return ndk::ScopedAStatus::ok();
}

void BlockingService::Block(SensorVela& engine) {
  VendorAtom marker;
  marker.atomId = kMarkerId;
  engine.ReportVendorAtomAsync(marker);
  std::unique_lock lock(mutex_);
  ++markers_queued_;
  changed_.notify_all();
  changed_.wait(lock, [this] { return markers_reached_ == markers_queued_; });
}

void BlockingService::Unblock() {
  const std::lock_guard lock(mutex_);
  unblocked_ = true;
  changed_.notify_all();
}

std::chrono::nanoseconds BlockingService::TimeBetweenMarkers() {
  const std::lock_guard lock(mutex_);
  return time_between_markers_;
}

BlockedEngine::BlockedEngine()
    : service_(ndk::SharedRefBase::make<BlockingService>()), engine_(StartEngine(service_)) {
  service_->Block(*engine_);
}

BlockedEngine::~BlockedEngine() { service_->Unblock(); }

std::chrono::nanoseconds BlockedEngine::Drain() {
  service_->Block(*engine_);
  return service_->TimeBetweenMarkers();
}

void BlockedEngine::Empty() {
  Drain();
  Drain();  // Before its marker is reached, the batch of the previous marker is freed.
}

}  // namespace sensorvela::benchmarks
