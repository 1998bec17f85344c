#include "engine/sensor_vela.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "engine/stats_service.h"

using sensorvela::platform::MutexLock;

static_assert(sizeof(long long) == sizeof(std::int64_t));

SensorVela::SensorVela(std::unique_ptr<SystemDiagnosticsSupplier>&& supplier)
    : stats_service_name_(sensorvela::StatsInstance()), diagnostics_supplier_(std::move(supplier)) {
  Start();
}

SensorVela::SensorVela(std::unique_ptr<SystemDiagnosticsSupplierV2>&& supplier)
    : stats_service_name_(sensorvela::StatsInstance()),
      diagnostics_supplier_v2_(std::move(supplier)) {
  Start();
}

SensorVela::~SensorVela() {
  RequestStop();
  reporter_thread_.join();
}

// Not in the destructor, because Clang does not check the locks in one.
void SensorVela::RequestStop() {
  // Under the lock, so that a thread that is about to wait sees either the flag or the
  // notification.
  const MutexLock lock(queue_mutex_);
  stop_requested_ = true;
  queue_cv_.NotifyAll(queue_mutex_);
}

void SensorVela::Start() {
  reporter_thread_ = sensorvela::platform::StartThread(
      [](void* engine) { static_cast<SensorVela*>(engine)->RunReporterThread(); }, this);
}

void SensorVela::ReportVendorAtomAsync(const VendorAtom& atom) {
  Enqueue(VendorAtom(atom));  // Copied before the lock: no thread waits for a copy.
}

void SensorVela::Enqueue(VendorAtom&& atom) {
  const MutexLock lock(queue_mutex_);
  atom_queue_.push_back(std::move(atom));
  queue_cv_.NotifyAll(queue_mutex_);
}
