// What happens to an engine in each scenario, and what may come of it.
#include "tests/schedules/scenarios.h"

#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "engine/sensor_vela.h"
#include "tests/schedules/platform.h"

namespace sensorvela::schedules {
namespace {

class SupplierV1 : public SensorVela::SystemDiagnosticsSupplier, Supplier {
 public:
  SensorVela::ProcessorDiag GetProcessorDiagnostics() override {
    Platform::Get().CallsOut();
    Platform::Get().Record('U');
    return {};
  }
  SensorVela::QueueStress GetQueueStressType1() override { return {}; }
  SensorVela::QueueStress GetQueueStressType2() override { return {}; }
  SensorVela::QueueStress GetQueueStressType3() override {
    Platform::Get().CallsOut();
    Platform::Get().Record('u');
    return {};
  }
};

/// Has one record, the first.
class SupplierV2 : public SensorVela::SystemDiagnosticsSupplierV2, Supplier {
 public:
  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override {
    Platform::Get().CallsOut();
    Platform::Get().Record('U');
    return std::make_unique<SensorVela::ProcessorDiag>();
  }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType1() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType2() override { return nullptr; }
  std::unique_ptr<SensorVela::QueueStress> GetQueueStressType3() override { return nullptr; }
  std::vector<SensorVela::IpcErrorRate> GetIpcErrorRates() override { return {}; }
  std::vector<SensorVela::MemoryPressure> GetMemoryPressures() override { return {}; }
  std::vector<SensorVela::SensorUsage> GetSensorUsages() override { return {}; }
  std::vector<SensorVela::GatingContext> GetGatingContexts() override { return {}; }
  std::unique_ptr<SensorVela::DramException> GetDramException() override { return nullptr; }
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override {
    Platform::Get().CallsOut();
    Platform::Get().Record('u');
    return nullptr;
  }
};

/// What a host does, one letter each:
///
///     1 2      starts an engine with a supplier of that generation
///     a ... d  queues that atom         e      reports an error
///     + s -    enables a sensor, delivers a sample, disables it
///     .        waits until nothing is left to do, and what may happen has happened
///     T S W    from now on six hours may pass, the service may come up, waits may end for nothing
///     N A R P  the service is undeclared, absent, refused, up
///     X        the reports of atom a fail
struct Script {
  /// Before the scenario begins: no decisions are made, and nothing is recorded.
  std::string before = {};
  std::string steps = {};
  /// On two more threads, of which the second has an engine of its own if it starts one.
  std::string one = {};
  std::string other = {};
  /// The engines are destroyed afterwards.
  std::string after = {};
};

class Host {
 public:
  void Do(const std::string& steps) {
    for (const char step : steps) {
      if (!Call(step)) Change(step);
    }
  }

 private:
  /// False: the step is not a call of the engine.
  bool Call(char step) {
    constexpr SensorVela::SensorId kSensor = {1, 2};
    SensorVela::VendorAtom atom;
    switch (step) {
      case '1':
        engine_ = std::make_unique<SensorVela>(std::make_unique<SupplierV1>());
        return true;
      case '2':
        engine_ = std::make_unique<SensorVela>(std::make_unique<SupplierV2>());
        return true;
      case 'e':
        engine_->LogSensorHalError(kSensor, SensorVela::HalCall{1}, 0);
        return true;
      case '+':
        engine_->ReportHalSensorEnabled(kSensor, 1);
        return true;
      case 's':
        engine_->LogSensorLatency(kSensor, 0);
        return true;
      case '-':
        engine_->ReportHalSensorDisabled(kSensor);
        return true;
      default:
        if (step < 'a' || step > 'd') return false;
        atom.atomId = static_cast<unsigned char>(step);
        engine_->ReportVendorAtomAsync(atom);
        return true;
    }
  }

  static void Change(char step) {
    Platform& platform = Platform::Get();
    if (step == '.') Step({.name = "rest", .when_idle = true});
    if (step == 'T') ++platform.six_hours().budget;
    if (step == 'S') ++platform.service_comes_up().budget;
    if (step == 'W') ++platform.spurious_wake().budget;
    if (step == 'N') platform.declared = false;
    if (step == 'A') platform.service = Platform::Service::kAbsent;
    if (step == 'R') platform.service = Platform::Service::kRefused;
    if (step == 'P') platform.service = Platform::Service::kUp;
    if (step == 'X') platform.report_of_a_fails = true;
  }

  std::unique_ptr<SensorVela> engine_;
};

void Play(const Script& script) {
  Host host;
  Branch(false);
  host.Do(script.before);
  Platform::Get().Forget();
  Branch(true);
  host.Do(script.steps);
  if (!script.other.empty()) {
    Host with_own_engine;
    Host& second = script.other.front() == '2' ? with_own_engine : host;
    std::thread one([&] { host.Do(script.one); });
    std::thread other([&] { second.Do(script.other); });
    one.join();
    other.join();
    host.Do(script.after);
  }
}

struct Row {
  const char* name;
  Script script;
  std::set<std::string> outcomes;
};

}  // namespace

// The letters of scripts are above, and those of outcomes in platform.h.
std::vector<Scenario> AllScenarios() {
  // More atoms than one block of the queue holds.
  const std::string b64(64, 'b');
  const std::string b65(65, 'b');
  const std::vector<Row> rows = {
      {"start_stop", {.steps = "2"}, {""}},
      {"start_stop_refused", {.steps = "R2"}, {"F", "FD"}},
      {"start_event_stop", {.steps = "2a"}, {"", "a"}},
      {"start_event_stop_absent", {.steps = "AS2a"}, {"", "a"}},
      {"start_event_stop_undeclared", {.steps = "NAS2a"}, {"N", "Na"}},
      {"start_hosts_stop", {.steps = "2", .one = "a", .other = "b"}, {"", "a", "b", "ab", "ba"}},
      {"start_hosts_rest", {.steps = "2", .one = "a", .other = "b", .after = "."}, {"ab", "ba"}},
      {"events_stop", {.before = "2.", .steps = "ab"}, {"", "a", "ab"}},
      {"events_stop_absent", {.before = "2.AS", .steps = "ab"}, {"", "a", "ab"}},
      {"events_rest_refused", {.before = "2.R", .steps = "ab.Pc."}, {"Dc", "DDc"}},
      {"events_rest_failed_report", {.before = "2.X", .steps = "ab."}, {"Xb"}},
      {"batch_of_64_rest", {.before = "2.Aa." + b64, .steps = "P."}, {"a" + b64}},
      {"batch_of_65_rest", {.before = "2.Aa." + b65, .steps = "P."}, {"a" + b65}},
      {"spurious_wake_event_stop", {.before = "2.", .steps = "Wa"}, {"", "a"}},
      {"spurious_wake_deadline_rest", {.before = "2.", .steps = "WT."}, {"TUup"}},
      {"deadline_stop", {.before = "2.", .steps = "T"}, {"T", "TUu", "TUup"}},
      {"deadline_stop_first_generation", {.before = "1.", .steps = "T"}, {"T", "TUu", "TUupqqq"}},
      {"deadline_event_stop",
       {.before = "2.", .steps = "Ta"},
       {"T", "aT", "Ta", "TUu", "TUup", "TUuap", "TUupa", "aTUu", "aTUup", "TaUu", "TaUup"}},
      {"deadline_event_rest",
       {.before = "2.", .steps = "Ta."},
       {"aTUup", "TaUup", "TUuap", "TUupa"}},
      {"deadline_absent_stop", {.before = "NA2a.", .steps = "T.S"}, {"Ta", "TaUu", "TaUup"}},
      {"deadlines_rest",
       {.before = "2.", .steps = "TT."},
       {"TTUup", "TTUupUup", "TUTupUup", "TUuTpUup", "TUupTUup"}},
      {"deadline_capped_error_rest",
       {.before = "2eeeeeeeeee.", .steps = "Te."},
       {"CTUup", "TCUup", "TUuep", "TUupe"}},
      {"errors_at_the_cap_rest",
       {.before = "2eeeeeeeee.", .one = "e", .other = "e", .after = "."},
       {"eC", "Ce"}},
      {"errors_past_the_cap_rest",
       {.before = "2eeeeeeeeee.", .one = "e", .other = "e", .after = "."},
       {"Cc"}},
      {"enable_sample_beside_disable_rest",
       {.before = "2.", .one = "+s", .other = "-", .after = "."},
       {"0+f", "+0f", "+f1"}},
      {"enable_beside_sample_rest",
       {.before = "2.", .one = "+", .other = "s", .after = "-."},
       {"f+0", "+f0", "+f1"}},
      {"sample_beside_sample_rest",
       {.before = "2+.", .one = "s", .other = "s", .after = "-."},
       {"f2"}},
      {"two_engines", {.before = "2.", .one = "a", .other = "2b"}, {"", "a", "b", "ab", "ba"}},
  };
  std::vector<Scenario> scenarios;
  for (const Row& row : rows) {
    scenarios.push_back({row.name, [script = row.script] { Play(script); }, row.outcomes});
  }
  return scenarios;
}

}  // namespace sensorvela::schedules
