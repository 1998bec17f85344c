// An engine's whole world on a workstation, in virtual time.
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

/// The clocks, the log, the service manager, the stats service and, if asked for, the engine. A
/// world has the process's virtual time, log and services while it exists, so there is one at a
/// time.
///
/// A test makes its world first and what owns an engine after it, and destroys them in the reverse
/// order. The engine's reporter thread works on its own; every `Take...` first waits until it has
/// done all that there is to do. Nothing takes real time.
///
/// To be used from one thread. Host threads that call the engine may run beside it.
class World {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;

  /// The device declares the stats service, and it is up.
  World();

  /// Destroys the engine, even one that waits for the stats service, and forgets all services.
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  /// Six hours pass with `time.RunTo(time.Now() + std::chrono::hours(6))`.
  simulated::VirtualTime time;

  // The service manager; see simulated/service_manager.h.

  void DeclareService();
  void UndeclareService();
  void RefuseService();
  void AllowService();
  /// `service` comes up.
  void RegisterService();
  /// It goes away. A test of an outage begins with this.
  void UnregisterService();
  /// The service manager fails: lookups that wait for the service end with none.
  void ReleaseServiceWaits();

  /// Starts the world's own engine; a test whose code under test makes the engine does not need
  /// it. At a cycle's end its supplier answers with `diagnostics`.
  SensorVela& StartEngine(SupplierKind supplier = SupplierKind::kSecondGeneration);
  bool has_engine() const { return engine_ != nullptr; }
  SensorVela& engine() { return *engine_; }

  /// Destroys the world's own engine. `release` ends what its reporter thread is blocked in: by
  /// default a wait for the service. See destroy_engine.h.
  void DestroyEngine();
  void DestroyEngine(const std::function<void()>& release);

  /// The atoms that have reached the service since the last call, in order.
  std::vector<VendorAtom> TakeAtoms();

  /// The same as `AtomText` writes them.
  std::vector<std::string> TakeAtomTexts();

  /// All that happened since the last call, in order: each log line after the letter of its
  /// priority (`E Failed to get IStats service.`), and each atom that reached the service, as
  /// `AtomText` writes it. A line with another tag than the library's has it in front.
  std::vector<std::string> TakeHistory() SENSORVELA_EXCLUDES(mutex_);

  /// What the service answers is planned with `service->AnswerNext`.
  const std::shared_ptr<StatsService> service;

  /// What the supplier answers. To be changed while nothing happens, or in `on_ask`.
  Diagnostics diagnostics;

  // Called on the reporter thread if set; to be set while nothing happens. The first is called for
  // each atom that reaches the service, the second for each item that the engine asks for.
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
