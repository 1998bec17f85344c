#include "testkit/world.h"

#include <android/log.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/log_tag.h"
#include "testkit/atom_text.h"
#include "testkit/destroy_engine.h"

namespace sensorvela::testkit {
namespace {

std::string LineText(int priority, std::string_view tag, std::string_view text) {
  const std::string letter = priority == ANDROID_LOG_INFO    ? "I "
                             : priority == ANDROID_LOG_ERROR ? "E "
                                                             : "? ";
  const std::string other_tag = tag == kLogTag ? "" : std::string(tag) + ": ";
  return letter + other_tag + std::string(text);
}

}  // namespace

World::World()
    : service(ndk::SharedRefBase::make<StatsService>([this](const VendorAtom& atom, Answer) {
        Keep(AtomText(atom));
        if (on_report) on_report(atom);
      })),
      log_sink_([this](int priority, std::string_view tag, std::string_view text) {
        Keep(LineText(priority, tag, text));
      }) {
  DeclareService();
  RegisterService();
}

World::~World() {
  DestroyEngine();
  simulated::ResetServices();
}

void World::UnregisterService() { OnceSettled(simulated::UnregisterService); }
void World::RegisterService() {
  OnceSettled([this](const auto& instance) { simulated::RegisterService(instance, service); });
}
void World::RefuseService() { OnceSettled(simulated::RefuseService); }
void World::AllowService() { OnceSettled(simulated::AllowService); }
void World::ReleaseServiceWaits() {
  OnceSettled([this](const auto&) { ReleaseLookups(); });
}
void World::FailServiceManager() {
  OnceSettled(simulated::FailServiceManager);
  ReleaseLookups();
}
void World::DeclareService() { OnceSettled(simulated::DeclareService); }
void World::UndeclareService() { OnceSettled(simulated::UndeclareService); }

void World::RegisterServiceProcess() {
  KillServiceProcess();
  time.WaitUntilSettled();
  process_ = std::make_shared<simulated::ServiceProcess>(
      service, simulated::ProcessObserver{
                   .on_lost = [this](const VendorAtom& atom) { Keep("lost " + AtomText(atom)); }});
  process_->SetTimePerAtom(time_per_atom_);
  simulated::RegisterService(kStatsInstance, process_);
}

void World::SetTimePerAtom(std::chrono::nanoseconds duration) {
  time_per_atom_ = duration;
  ChangeProcess([=](simulated::ServiceProcess& process) { process.SetTimePerAtom(duration); });
}

void World::StopServiceProcess() { ChangeProcess(std::mem_fn(&simulated::ServiceProcess::Stop)); }
void World::ContinueServiceProcess() {
  ChangeProcess(std::mem_fn(&simulated::ServiceProcess::GoOn));
}
void World::KillServiceProcess() { ChangeProcess(std::mem_fn(&simulated::ServiceProcess::Die)); }

std::size_t World::AtomsInBuffer() {
  time.WaitUntilSettled();
  return process_ != nullptr ? process_->AtomsInBuffer() : 0;
}

SensorVela& World::StartEngine(SupplierKind supplier) {
  DestroyEngine();
  engine_ = MakeEngine(supplier, Ask());
  return *engine_;
}

AskDiagnostics World::Ask() {
  return [this](DiagnosticsItem asked) {
    if (on_ask) on_ask(asked);
    return diagnostics;
  };
}

void World::DestroyEngine() {
  if (!has_engine()) return;
  time.WaitUntilSettled();  // Now the thread waits if it has to.
  DestroyEngine([this] { ReleaseLookups(); });
}

void World::DestroyEngine(const std::function<void()>& release) {
  testkit::DestroyEngine(time, [this] { engine_.reset(); }, release);
}

std::vector<World::VendorAtom> World::TakeAtoms() {
  time.WaitUntilSettled();
  return service->TakeAtoms();
}

std::vector<std::string> World::TakeAtomTexts() {
  std::vector<std::string> texts;
  for (const VendorAtom& atom : TakeAtoms()) texts.push_back(AtomText(atom));
  return texts;
}

std::vector<std::string> World::TakeHistory() {
  time.WaitUntilSettled();
  const platform::MutexLock lock(mutex_);
  return std::exchange(history_, {});
}

void World::OnceSettled(const std::function<void(const std::string& instance)>& change) {
  time.WaitUntilSettled();
  change(kStatsInstance);
}

void World::ChangeProcess(const std::function<void(simulated::ServiceProcess& process)>& change) {
  time.WaitUntilSettled();
  if (process_ != nullptr) change(*process_);
}

void World::ReleaseLookups() {
  simulated::ReleaseServiceWaits(kStatsInstance);
  // It need not be registered any more.
  if (process_ != nullptr) process_->ReleaseLookups();
}

void World::Keep(std::string text) {
  const platform::MutexLock lock(mutex_);
  history_.push_back(std::move(text));
}

}  // namespace sensorvela::testkit
