// The environment of an engine on a workstation, in virtual time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../engine/sensor_vela.h"
#include "../platform/simulated/log_sink.h"
#include "../platform/simulated/service_manager.h"
#include "../platform/simulated/virtual_time.h"
#include "../platform/sync.h"
#include "diagnostics.h"
#include "stats_service.h"

#include "../platform/thread_annotations.h"

namespace sensorvela::testkit {

/// The clocks, the log, the service manager, the stats service and, on request, an engine. While a
/// world exists it controls the process's virtual time, log and services, so only one may exist at
/// a time.
///
/// A test constructs its world before the objects that own an engine, and destroys it after them.
/// The engine's reporter thread runs by itself; every `Take...` first waits until it has nothing
/// left to do. No wait takes real time.
///
/// Use a world from one thread. Other threads may call the engine meanwhile.
class World {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;

  /// Declares the stats service and registers it.
  World();

  /// Destroys the world's engine, even if it waits for the stats service, and resets the service
  /// manager.
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  /// `time.RunTo(time.Now() + std::chrono::hours(6))` lets six hours pass.
  simulated::VirtualTime time;

  // The service manager; see simulated/service_manager.h.

  void DeclareService();
  void UndeclareService();
  void RefuseService();
  void AllowService();
  /// `service` comes up.
  void RegisterService();
  /// Unregisters `service`, as at the start of an outage.
  void UnregisterService();
  /// The service manager fails: lookups that wait for the service end with none.
  void ReleaseServiceWaits();

  /// Creates the world's own engine; a test whose code under test creates an engine does not need
  /// it. At a cycle's end the engine's supplier returns the items of `diagnostics`.
  SensorVela& StartEngine(SupplierKind supplier = SupplierKind::kSecondGeneration);
  bool has_engine() const { return engine_ != nullptr; }
  SensorVela& engine() { return *engine_; }

  /// Destroys the world's own engine. `release` unblocks its reporter thread; the default ends a
  /// wait for the service. See destroy_engine.h.
  void DestroyEngine();
  void DestroyEngine(const std::function<void()>& release);

  /// The atoms that have reached the service since the last call, in order.
  std::vector<VendorAtom> TakeAtoms();

  /// The same atoms, as `AtomText` writes them.
  std::vector<std::string> TakeAtomTexts();

  /// All log lines and atoms since the last call, in order. A log line begins with the letter of
  /// its priority (`E Failed to get IStats service.`) and, if its tag is not the library's, the
  /// tag. An atom that reached the service is written as by `AtomText`.
  std::vector<std::string> TakeHistory() SENSORVELA_EXCLUDES(mutex_);

  /// `service->AnswerNext` plans its answers.
  const std::shared_ptr<StatsService> service;

  /// What the supplier returns. Change it only while the engine is settled, or in `on_ask`.
  Diagnostics diagnostics;

  // Called on the reporter thread if set; set them only while the engine is settled. `on_report` is
  // called for each atom that reaches the service, `on_ask` for each item that the engine asks the
  // supplier for.
  std::function<void(const VendorAtom& atom)> on_report;
  std::function<void(DiagnosticsItem asked)> on_ask;

 private:
  void Keep(std::string text) SENSORVELA_EXCLUDES(mutex_);

  platform::Mutex mutex_;
  std::vector<std::string> history_ SENSORVELA_GUARDED_BY(mutex_);
  const simulated::ScopedLogSink log_sink_;
  std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::testkit

#include "../platform/thread_annotations_end.h"
