#include "benchmarks/engine.h"

#include <string>

#include <sensorvela/platform/simulated/service_manager.h>

namespace sensorvela::benchmarks {
namespace {

constexpr std::int32_t kPlugId = -1;

class NoOpService : public IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom&) override {
    return ndk::ScopedAStatus::ok();
  }
};

std::unique_ptr<SensorVela> StartEngine(std::shared_ptr<IStats> service) {
  simulated::RegisterService(std::string(IStats::descriptor) + "/default", std::move(service));
  return std::make_unique<SensorVela>(
      std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>(nullptr));
}

}  // namespace

std::unique_ptr<SensorVela> StartEngine() { return StartEngine(std::make_shared<NoOpService>()); }

ndk::ScopedAStatus PluggedService::reportVendorAtom(const VendorAtom& atom) {
  if (atom.atomId == kPlugId) {
    std::unique_lock lock(mutex_);
    const std::uint64_t number = ++reached_;
    between_plugs_ = std::chrono::steady_clock::now() - released_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return unplugged_ || queued_ > number; });
    released_ = std::chrono::steady_clock::now();
  }
  return ndk::ScopedAStatus::ok();
}

void PluggedService::Plug(SensorVela& engine) {
  VendorAtom plug;
  plug.atomId = kPlugId;
  engine.ReportVendorAtomAsync(plug);
  std::unique_lock lock(mutex_);
  ++queued_;
  changed_.notify_all();
  changed_.wait(lock, [this] { return reached_ == queued_; });
}

void PluggedService::Unplug() {
  const std::lock_guard lock(mutex_);
  unplugged_ = true;
  changed_.notify_all();
}

std::chrono::nanoseconds PluggedService::TimeBetweenPlugs() {
  const std::lock_guard lock(mutex_);
  return between_plugs_;
}

BusyEngine::BusyEngine()
    : service_(std::make_shared<PluggedService>()), engine_(StartEngine(service_)) {
  service_->Plug(*engine_);
}

BusyEngine::~BusyEngine() { service_->Unplug(); }

std::chrono::nanoseconds BusyEngine::Drain() {
  service_->Plug(*engine_);
  return service_->TimeBetweenPlugs();
}

void BusyEngine::Empty() {
  Drain();
  Drain();  // The batch that the first plug came with has been freed when the second is reached.
}

}  // namespace sensorvela::benchmarks
