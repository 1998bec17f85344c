// The environment of an engine on a workstation, in virtual time.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../engine/sensor_vela.h"
#include "../platform/simulated/log_sink.h"
#include "../platform/simulated/service_manager.h"
#include "../platform/simulated/service_process.h"
#include "../platform/simulated/virtual_time.h"
#include "../platform/sync.h"
#include "atom_text.h"
#include "diagnostics.h"
#include "stats_service.h"

#include "../platform/thread_annotations.h"

namespace sensorvela::testkit {

/// The clocks, the log, the service manager, the stats service and, on request, an engine. With a
/// `world`, and a `hal` that owns an engine:
///
///     world.UnregisterService();
///     EXPECT_EQ(hal.Activate(true), 0);
///     EXPECT_THAT(world.TakeAtomTexts(), SizeIs(0));
///     world.RegisterService();
///     EXPECT_THAT(world.TakeAtomTexts(), SizeIs(1));
///
/// While a world exists it controls the process's virtual time, log and services, so only one may
/// exist at a time.
///
/// A test constructs its world before the objects that own an engine, and destroys it after them.
/// The destructor of an engine whose thread waits for the service does not return. A fixture that
/// calls `FailServiceManager` in its destructor ends such a wait, whatever a failed test has left
/// behind.
///
/// The engine's reporter thread runs by itself. Every `Take...` and every operation on the service
/// first waits until the engine is settled. No wait takes real time.
///
/// Use a world from one thread. Other threads may call the engine meanwhile.
class World {
 public:
  using VendorAtom = aidl::android::frameworks::stats::VendorAtom;

  /// Declares the stats service and registers it.
  World();

  /// Destroys the world's own engine, even if it waits for the stats service, and resets the
  /// service manager.
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  /// `time.RunFor(std::chrono::hours(6))` lets six hours pass.
  simulated::VirtualTime time;

  // The stats service behaves as on a device: an engine whose service is absent waits for it and
  // keeps its atoms. The engine drops atoms only when a lookup ends without a service, for one of
  // three reasons: the access is refused, the service manager fails, or the service's process dies.

  /// Unregisters `service`: an outage begins.
  void UnregisterService();
  /// Registers `service` again, in the host's own process: it is called directly.
  void RegisterService();
  /// Refuses the process the access to the service, or allows it again. While it is refused, each
  /// new lookup drops the atoms for which it is made, and an engine that starts finds the service
  /// not declared. A lookup that waits goes on waiting.
  void RefuseService();
  void AllowService();
  /// Makes the service manager fail once: the lookup that waits at this moment ends without a
  /// service, and the atoms for which it was made are dropped. Those queued since then are not.
  void ReleaseServiceWaits();
  /// Makes the service manager fail for good: no lookup waits any more, and each drops the atoms
  /// for which it is made.
  void FailServiceManager();
  /// What the device declares matters to one line of the log when an engine starts, and to nothing
  /// else.
  void DeclareService();
  void UndeclareService();

  // On a device the service has a process of its own: reports go into a buffer there, which can
  // fill, and each lookup waits for the process. See `simulated::ServiceProcess`.

  /// Registers `service` again, in a new process of its own. A process before dies.
  void RegisterServiceProcess();
  /// How long the present process and those after it work on an atom, from the next atom on; 0 at
  /// first. `time.RunFor` lets them work.
  void SetTimePerAtom(std::chrono::nanoseconds duration);
  // What happens to the present process, if there is one: it stops and goes on, or dies and loses
  // the atoms in its buffer.
  void StopServiceProcess();
  void ContinueServiceProcess();
  void KillServiceProcess();
  /// The atoms that the process has not taken yet.
  std::size_t AtomsInBuffer();

  /// Creates the world's own engine; a test whose code under test creates an engine does not need
  /// it. Its supplier returns the items of `diagnostics`.
  SensorVela& StartEngine(SupplierKind supplier = SupplierKind::kSecondGeneration);
  bool has_engine() const { return engine_ != nullptr; }
  SensorVela& engine() { return *engine_; }

  /// Returns the items of `diagnostics`, for the supplier of an engine that is not the world's own:
  /// `MakeSecondGenerationSupplier(world.Ask())`. The world outlives the function.
  AskDiagnostics Ask();

  /// Destroys the world's own engine, even if it waits for the service; does nothing if there is
  /// none. `StartEngine` does the same with the engine before.
  void DestroyEngine();
  /// Destroys the world's own engine, which must exist and whose reporter thread waits for what
  /// `release` ends. See destroy_engine.h.
  void DestroyEngine(const std::function<void()>& release);

  /// The atoms that have reached the service since the last call, in order.
  std::vector<VendorAtom> TakeAtoms();

  /// The same atoms, as `AtomText` writes them.
  std::vector<std::string> TakeAtomTexts();

  /// All log lines and atoms since the last call. A log line begins with the letter of its priority
  /// (`E Failed to get IStats service.`) and, if its tag is not the library's, the tag. An atom
  /// that reached the service is written as by `AtomText`, and one that was lost in the buffer of
  /// the service's process the same with `lost ` before it.
  ///
  /// The lines of one thread are in order, and an event's line comes before its atom. The order
  /// between the host's lines and the reporter thread's atoms is otherwise left to chance: a test
  /// that reports several errors takes the history after each.
  std::vector<std::string> TakeHistory() SENSORVELA_EXCLUDES(mutex_);

  /// `service->AnswerNext` plans its answers.
  const std::shared_ptr<StatsService> service;

  /// What the supplier of `StartEngine` or `Ask` returns. Change it only while the engine is
  /// settled, or in `on_ask`.
  Diagnostics diagnostics;

  // Called on the reporter thread if set; set them only while the engine is settled. `on_report` is
  // called for each atom that reaches the service, `on_ask` for each item that the engine asks the
  // supplier for.
  std::function<void(const VendorAtom& atom)> on_report;
  std::function<void(DiagnosticsItem asked)> on_ask;

 private:
  void OnceSettled(const std::function<void(const std::string& instance)>& change);
  void ChangeProcess(const std::function<void(simulated::ServiceProcess& process)>& change);
  void ReleaseLookups();
  void Keep(std::string text) SENSORVELA_EXCLUDES(mutex_);

  platform::Mutex mutex_;
  std::vector<std::string> history_ SENSORVELA_GUARDED_BY(mutex_);
  const simulated::ScopedLogSink log_sink_;
  std::chrono::nanoseconds time_per_atom_{0};
  std::shared_ptr<simulated::ServiceProcess> process_;
  std::unique_ptr<SensorVela> engine_;
};

}  // namespace sensorvela::testkit

#include "../platform/thread_annotations_end.h"
