// What happens to an engine that is recorded in each scenario. In every schedule the file must say
// what the engine did.
#include <android/binder_manager.h>
#include <android/binder_status.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "engine/sensor_vela.h"
#include "recorder/recorded_supplier.h"
#include "recorder/recording.h"
#include "recorder/recording_file.h"
#include "recorder/recordings.h"
#include "recorder/thread_state.h"
#include "tests/schedules/memory.h"
#include "tests/schedules/platform.h"
#include "tests/schedules/scenarios.h"
#include "trace_format/sample_list.h"

namespace sensorvela::schedules {
namespace {

using recorder::EventLine;
using recorder::Recording;
using recorder::RecordingFile;
using recorder::Recordings;
using recorder::ThisThread;
using recorder::ThreadState;

/// What the recorder has of a run.
struct Recorded {
  std::array<ThreadState, kMaxThreads> threads;
  Recordings* recordings = nullptr;
  std::map<const RecordingFile*, std::string> files;
  int writes = 0;
  /// The write that fails; 0 for none.
  int failing_write = 0;
  int engines = 0;
  /// The host's calls.
  int calls = 0;
} recorded;

/// The text after `key` in the line, up to the next comma or bracket.
std::string_view After(std::string_view line, std::string_view key) {
  const std::size_t begin = line.find(key);
  if (begin == std::string_view::npos) return "";
  line.remove_prefix(begin + key.size());
  return line.substr(0, line.find_first_of(",}]"));
}

/// Reads a recording as the replay does, and much simpler: what the engine must have sent.
class Reader {
 public:
  void Read(std::string_view line) {
    const std::string_view event = After(line, R"("event":")");
    const std::string_view kind = event.substr(0, event.find('"'));
    if (kind == "atom") {
      Queue(static_cast<char>(std::stoi(std::string(After(line, R"("id":)")))));
    } else if (kind == "hal_error") {
      ++calls;
      if (++errors_ <= 10) Add('e');
    } else if (kind == "sensor_enabled") {
      samples_ = 0;
      Queue('+');
    } else if (kind == "sensor_disabled") {
      Queue(static_cast<char>('0' + samples_));
    } else if (kind == "sample_lists") {
      ReadSamples(After(line, R"("lists":[)"));
    } else if (kind == "service_found_declared") {
      is_start_ = true;
    } else if (kind == "lookup_waits") {
      TakeBatch();
      waits_ = true;
    } else if (kind == "lookup_found" || kind == "lookup_found_none") {
      if (!std::exchange(waits_, false)) TakeBatch();
      KnowReports(line);
      if (kind == "lookup_found") sent += batch_;
      batch_.clear();
    } else if (kind == "cycle_ended") {
      errors_ = 0;
    } else if (kind == "supplier_answers") {
      if (line.find("processor") != std::string_view::npos) Add('p');
    } else if (kind == "end") {
      is_whole = true;
      KnowReports(line);
    }
  }

  /// All atoms, sent or not.
  std::string queued;
  std::string sent;
  std::string wrong;
  int calls = 0;
  bool is_whole = false;

 private:
  void Add(char letter) {
    queue_ += letter;
    queued += letter;
  }
  void Queue(char letter) {
    ++calls;
    Add(letter);
  }
  void ReadSamples(std::string_view list) {
    list = list.substr(1, list.find('"', 1) - 1);
    trace_format::SampleListCodec codec(0);
    for (trace_format::Sample sample = {}; !list.empty(); ++calls) {
      if (!codec.Take(list, sample)) wrong = "no list of samples";
      if (samples_++ == 0) Add('g');  // Its latency is 0: time stands still.
    }
  }
  /// The lookup at the engine's start has none.
  void TakeBatch() {
    if (!std::exchange(is_start_, false)) batch_ = std::exchange(queue_, "");
  }
  void KnowReports(std::string_view line) {
    if (After(line, R"("reports":)") != std::to_string(sent.size())) wrong = "other reports";
  }

  std::string queue_;
  std::string batch_;
  int errors_ = 0;
  int samples_ = 0;
  bool waits_ = false;
  bool is_start_ = false;
};

Reader Read(std::string_view file) {
  Reader reader;
  for (std::size_t end = 0; (end = file.find('\n')) != std::string_view::npos;) {
    reader.Read(file.substr(0, end));
    file.remove_prefix(end + 1);
  }
  return reader;
}

/// Those of the letters that `kept` has.
std::string Only(std::string letters, std::string_view kept) {
  std::erase_if(letters, [&](char letter) { return kept.find(letter) == std::string_view::npos; });
  return letters;
}

/// What the service received, then what is wrong with the recording, if something is.
std::string Outcome() {
  constexpr std::string_view kSent = "abcde+0123fgpq";
  std::string sent;
  std::string outcome;
  for (const char letter : Platform::Get().record()) {
    if (kSent.find(letter) != std::string_view::npos) sent += letter;
    if (letter == 'E' && outcome.find('E') != std::string::npos) return "two lines in the log";
    if (letter == 'E') outcome += " E";
  }
  outcome.insert(0, sent);
  const bool has_ended_early = outcome.find('E') != std::string::npos;
  bool is_whole = true;
  int calls = 0;
  std::size_t sent_in_all = 0;
  for (const auto& [file, text] : recorded.files) {
    const Reader reader = Read(text);
    if (!text.ends_with('\n')) outcome += ", a part of a line";
    if (!reader.wrong.empty() && !has_ended_early) outcome += ", " + reader.wrong;
    if (reader.is_whole == has_ended_early) outcome += ", not whole";
    // Each engine has atoms of its own.
    if (reader.is_whole && reader.sent != Only(sent, reader.queued)) {
      outcome += ", recorded: " + reader.sent;
    }
    is_whole = is_whole && reader.is_whole;
    calls += reader.calls;
    sent_in_all += reader.sent.size();
  }
  if (is_whole && sent_in_all != sent.size()) outcome += ", sent by no engine";
  if (is_whole && calls != recorded.calls) outcome += ", not each call once";
  return outcome;
}

/// What a host does, in the letters of the other scenarios, beside these:
///
///     D        the next write to the disk fails
///     Q        the process ends, and may not wait
///     |        no decisions are made from here on
struct Script {
  std::string before = {};
  std::string steps = {};
  std::string one = {};
  std::string other = {};
  std::string after = {};
  /// So many events fill a batch.
  std::size_t lines = 64;
  bool waits_for_disk = false;
};

class Supplier : public SensorVela::SystemDiagnosticsSupplierV2 {
 public:
  std::unique_ptr<SensorVela::ProcessorDiag> GetProcessorDiagnostics() override {
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
  std::unique_ptr<SensorVela::AadProxStats> GetAadProxStats() override { return nullptr; }
};

class Host {
 public:
  explicit Host(Recordings& recordings) : recordings_(recordings) {}

  void Do(const std::string& steps) {
    for (const char step : steps) {
      if (!Call(step)) Change(step);
    }
  }

  /// Destroys the engine, if it has been started.
  void End() {
    if (engine_ == nullptr) return;
    const SensorVela* const engine = engine_.get();
    engine_.reset();
    recordings_.Remove(engine)->EngineEnds();
    // The writer gives up the recording last of all; what it did comes before what follows here.
    Step({.name = "rest", .when_idle = true});
    recording_->ProcessEnds({});
  }

 private:
  /// Calls the engine as the recorder's methods in its place do.
  template <typename Engine, typename Write>
  void Record(std::string_view kind, const Engine& call, const Write& write) {
    ++recorded.calls;
    recording_->is_active() ? recording_->RecordCall(kind, call, write) : call();
  }

  /// As the recorder's constructor does. The engine's address is known before it is constructed.
  void Start() {
    void* const place = operator new(sizeof(SensorVela));
    recording_ = recordings_.Begin(static_cast<SensorVela*>(place), "second");
    // Each of the engines can start while the other does. All of their lives beside each other
    // would be too many schedules.
    if (++recorded.engines == 2) Branch(false);
    engine_.reset(new (place) SensorVela(recorder::MakeRecordedSupplier(
        recording_, std::unique_ptr<SensorVela::SystemDiagnosticsSupplierV2>(new Supplier))));
  }

  bool Call(char step) {
    constexpr SensorVela::SensorId kSensor = {1, 2};
    const auto nothing = [](EventLine&) {};
    switch (step) {
      case '2':
        Start();
        return true;
      case 'e':
        Record(
            "hal_error", [&] { engine_->LogSensorHalError(kSensor, SensorVela::HalCall{1}, 0); },
            nothing);
        return true;
      case '+':
        Record("sensor_enabled", [&] { engine_->ReportHalSensorEnabled(kSensor, 1); }, nothing);
        return true;
      case '-':
        Record("sensor_disabled", [&] { engine_->ReportHalSensorDisabled(kSensor); }, nothing);
        return true;
      case 's': {
        ++recorded.calls;
        const auto call = [&] { engine_->LogSensorLatency(kSensor, 0); };
        recording_->is_active() ? recording_->RecordSample(call, kSensor, 0) : call();
        return true;
      }
      default:
        if (step < 'a' || step > 'd') return false;
        SensorVela::VendorAtom atom;
        atom.atomId = static_cast<unsigned char>(step);
        Record(
            "atom", [&] { engine_->ReportVendorAtomAsync(atom); },
            [&](EventLine& line) { line.Integer("id", step); });
        return true;
    }
  }

  void Change(char step) {
    Platform& platform = Platform::Get();
    if (step == '.') Step({.name = "rest", .when_idle = true});
    if (step == 'T') ++platform.six_hours().budget;
    if (step == 'S') ++platform.service_comes_up().budget;
    if (step == 'W') ++platform.spurious_wake().budget;
    if (step == 'A') platform.service = Platform::Service::kAbsent;
    if (step == 'R') platform.service = Platform::Service::kRefused;
    if (step == 'P') platform.service = Platform::Service::kUp;
    if (step == 'D') recorded.failing_write = recorded.writes + 1;
    if (step == 'Q') recording_->ProcessEnds({});
    if (step == '|') Branch(false);
  }

  Recordings& recordings_;
  std::shared_ptr<Recording> recording_;
  std::unique_ptr<SensorVela> engine_;
};

void Play(const Script& script) {
  Platform& platform = Platform::Get();
  platform.has_rules = false;
  platform.elapses = false;
  recorded = {};
  Branch(false);
  platform.environment.switched = [](int from, int to) {
    recorded.threads[static_cast<std::size_t>(from)] =
        std::exchange(ThisThread(), recorded.threads[static_cast<std::size_t>(to)]);
  };
  platform.environment.outcome = Outcome;
  ThisThread() = {};
  setenv("SENSORVELA_RECORDING", "file", 1);
  setenv("SENSORVELA_RECORDING_WAIT", script.waits_for_disk ? "1" : "0", 1);
  Recordings recordings({script.lines, script.lines, 4096, 1024});
  recorded.recordings = &recordings;
  Host host(recordings);
  Host with_own_engine(recordings);
  host.Do(script.before);
  Branch(true);
  host.Do(script.steps);
  if (!script.one.empty()) {
    Host& second = script.other.starts_with('2') ? with_own_engine : host;
    std::thread one([&] { host.Do(script.one); });
    std::optional<std::thread> other;
    if (!script.other.empty()) other.emplace([&] { second.Do(script.other); });
    one.join();
    if (other) other->join();
    host.Do(script.after);
  }
  // After a rest, the end is that of `start_stop`.
  if (script.steps.ends_with('.') || script.after.ends_with('.')) Branch(false);
  host.End();
  with_own_engine.End();
}

struct Row {
  const char* name;
  Script script;
  std::set<std::string> outcomes;
};

}  // namespace

std::vector<Scenario> AllScenarios() {
  const std::vector<Row> rows = {
      {"start_stop", {.before = "2"}, {""}},
      {"event_stop", {.before = "2.", .steps = "a"}, {"", "a"}},
      {"event_stop_absent", {.before = "2.AS", .steps = "ab"}, {"", "a", "ab"}},
      {"events_rest", {.before = "2.", .one = "a", .other = "b", .after = "."}, {"ab", "ba"}},
      {"events_rest_refused", {.before = "2.R", .one = "a", .other = "b", .after = ".Pc."}, {"c"}},
      {"event_beside_refusal", {.before = "2.Ra", .one = "b", .after = ".Pc."}, {"c"}},
      {"deadline_stop", {.before = "2.", .steps = "T"}, {"", "p"}},
      {"deadline_event_rest", {.before = "2.", .steps = "Ta."}, {"ap", "pa"}},
      {"deadline_capped_error_rest",
       {.before = "2eeeeeeeeee.", .steps = "Te."},
       {"eeeeeeeeeep", "eeeeeeeeeeep", "eeeeeeeeeepe"}},
      {"enable_sample_beside_disable_rest",
       {.before = "2.", .one = "+s", .other = "-", .after = "."},
       {"0+g", "+0g", "+g1"}},
      {"full_batch", {.before = "2.Aa.", .steps = "bcdP.", .lines = 4}, {"abcd", "abcd E"}},
      {"full_batch_that_waits",
       {.before = "2.Aa.", .steps = "bcP.", .lines = 2, .waits_for_disk = true},
       {"abc"}},
      {"full_batch_that_waits_beside_a_host",
       {.before = "2.Aa.b",  // Which fills a batch.
        .one = "c",
        .other = "d",
        .after = "|P.",
        .lines = 2,
        .waits_for_disk = true},
       {"abcd", "abdc"}},
      {"failing_disk", {.before = "2.D", .one = "a", .other = "b", .after = "."}, {"ab E", "ba E"}},
      {"process_ends", {.before = "2.", .one = "a", .other = "Q", .after = "."}, {"a"}},
      {"process_ends_and_waits",
       {.before = "2.", .one = "a", .other = "Q", .after = ".", .waits_for_disk = true},
       {"a"}},
      {"two_engines_start", {.one = "2a", .other = "2c", .after = "."}, {"ac", "ca"}},
      {"spurious_wake_event", {.before = "2.R", .one = "Wa", .after = ".Pc."}, {"c"}},
  };
  std::vector<Scenario> scenarios;
  for (const Row& row : rows) {
    scenarios.push_back({row.name, [script = row.script] { Play(script); }, row.outcomes});
  }
  return scenarios;
}

}  // namespace sensorvela::schedules

using sensorvela::recorder::RecordingFile;
using sensorvela::recorder::RecordingOfCaller;
using sensorvela::schedules::CheckerMemory;
using sensorvela::schedules::recorded;

std::int64_t android::uptimeNanos() { return 0; }

// The file, in the place of the recorder's.

std::optional<std::string> RecordingFile::Create(const std::string&) {
  const CheckerMemory checker_memory;
  recorded.files[this].clear();
  return std::nullopt;
}
std::optional<std::string> RecordingFile::Write(std::string_view text) {
  if (text.empty()) return std::nullopt;
  if (++recorded.writes == recorded.failing_write) return "the disk is full";
  const CheckerMemory checker_memory;
  recorded.files[this] += text;
  return std::nullopt;
}
std::optional<std::string> RecordingFile::Flush() { return std::nullopt; }
std::optional<std::string> RecordingFile::Close() { return std::nullopt; }

// The linker puts these in the place of the engine's steps and of the device's functions, as the
// recorder does where it is loaded.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the linker's names.
void __real__ZN10SensorVela17RunReporterThreadEv(SensorVela* engine);
void __wrap__ZN10SensorVela17RunReporterThreadEv(SensorVela* engine) {
  auto* const recording = recorded.recordings->Find(engine);
  if (recording == nullptr) sensorvela::schedules::Fail("an engine without its recording");
  sensorvela::recorder::ThisThread().reports_for = recording;
  __real__ZN10SensorVela17RunReporterThreadEv(engine);
}
void __real__ZN10SensorVela14DrainAtomQueueEv(SensorVela* engine);
void __wrap__ZN10SensorVela14DrainAtomQueueEv(SensorVela* engine) {
  RecordingOfCaller()->DrainBegins();
  __real__ZN10SensorVela14DrainAtomQueueEv(engine);
}
void __real__ZN10SensorVela8EndCycleEv(SensorVela* engine);
void __wrap__ZN10SensorVela8EndCycleEv(SensorVela* engine) {
  RecordingOfCaller()->CycleEndBegins();
  __real__ZN10SensorVela8EndCycleEv(engine);
  RecordingOfCaller()->CycleEndEnds();
}
bool __real_AServiceManager_isDeclared(const char* instance);
bool __wrap_AServiceManager_isDeclared(const char* instance) {
  const bool is_declared = __real_AServiceManager_isDeclared(instance);
  if (is_declared) RecordingOfCaller()->ServiceFoundDeclared();
  return is_declared;
}
AIBinder* __real_AServiceManager_waitForService(const char* instance);
AIBinder* __wrap_AServiceManager_waitForService(const char* instance) {
  RecordingOfCaller()->LookupBegins();
  AIBinder* const binder = __real_AServiceManager_waitForService(instance);
  RecordingOfCaller()->LookupEnds(binder != nullptr);
  return binder;
}
bool __real_AStatus_isOk(const AStatus* status);
bool __wrap_AStatus_isOk(const AStatus* status) {
  const bool is_ok = __real_AStatus_isOk(status);
  RecordingOfCaller()->ReportEnds(is_ok);
  return is_ok;
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
}
