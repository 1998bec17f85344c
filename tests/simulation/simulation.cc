// Runs a real engine and the model through the same random steps and compares their effects after
// every step. A seed determines a whole run and can be given on the command line.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/library/test_support.h"
#include "tests/simulation/expected_atom.h"
#include "tests/simulation/simulation.h"
#include "tests/simulation/simulation_model.h"

namespace sensorvela::testing {
namespace {

using std::int32_t;
using std::int64_t;
using testkit::Answer;
using V = SensorVela;
constexpr std::int64_t kDayNs = 86'400'000'000'000;

/// Random values, with edge cases more often.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : random_(seed) {}

  std::uint64_t Bits() { return random_(); }
  bool OneIn(unsigned n) { return random_() % n == 0; }
  int64_t UpTo(int64_t limit) {
    return static_cast<int64_t>(random_() % (static_cast<std::uint64_t>(limit) + 1));
  }

  template <typename T>
  T OneOf(std::initializer_list<T> values) {
    return values.begin()[random_() % values.size()];
  }

  /// Any value, with edge cases more often.
  int32_t Int() {
    return OneIn(2) ? OneOf({0, 1, -1, 3, INT32_MAX, INT32_MIN}) : static_cast<int32_t>(Bits());
  }
  int64_t Long() {
    return OneIn(2) ? OneOf<int64_t>({0, 1, -1, INT64_MAX, INT64_MIN, int64_t{1} << 32})
                    : static_cast<int64_t>(Bits());
  }
  float Float() { return std::bit_cast<float>(Int()); }
  V::SensorId Sensor() { return {OneOf({0U, 1U, 0xFFFFFFFFU}), OneOf({0, -1, INT32_MIN})}; }

  /// A record of 32-bit fields of random bits; `Fix` then sets the fields of other types.
  template <typename Record>
  Record Words() {
    std::array<int32_t, sizeof(Record) / sizeof(int32_t)> words;
    for (int32_t& word : words) word = Int();
    return std::bit_cast<Record>(words);
  }

  template <typename Record>
  std::optional<Record> Maybe() {
    return OneIn(2) ? std::optional(Words<Record>()) : std::nullopt;
  }

  template <typename Record>
  std::vector<Record> Some() {
    std::vector<Record> records(random_() % 4);
    for (Record& record : records) record = Words<Record>();
    return records;
  }

 private:
  std::mt19937_64 random_;
};

/// One step of a run, for the engine and for the model.
struct Step {
  std::string text;
  std::function<void(World&)> real;
  std::function<void(Model&)> model;
};

std::string Text(const char* name, std::initializer_list<int64_t> values) {
  std::string text = name;
  for (const int64_t value : values) text += " " + std::to_string(value);
  return text;
}

/// An operation on the stats service, its process or its manager.
struct Operation {
  const char* name;
  void (World::*real)();
  void (Model::*model)();
};

constexpr Operation kRegister = {"register", &World::RegisterService, &Model::Register};
constexpr Operation kUnregister = {"unregister", &World::UnregisterService, &Model::Unregister};
constexpr Operation kRelease = {"release waits", &World::ReleaseServiceWaits, &Model::ReleaseWaits};
constexpr Operation kRefuse = {"refuse", &World::RefuseService, &Model::Refuse};
constexpr Operation kAllow = {"allow", &World::AllowService, &Model::Allow};
constexpr Operation kDeclare = {"declare", &World::DeclareService, &Model::Declare};
constexpr Operation kUndeclare = {"undeclare", &World::UndeclareService, &Model::Undeclare};
constexpr Operation kProcess = {"process", &World::RegisterServiceProcess, &Model::RegisterProcess};
constexpr Operation kStop = {"stop", &World::StopServiceProcess, &Model::Stop};
constexpr Operation kGoOn = {"go on", &World::ContinueServiceProcess, &Model::GoOn};
constexpr Operation kKill = {"kill", &World::KillServiceProcess, &Model::Die};

Step StepOf(const Operation& operation) {
  return {operation.name, [=](World& world) { (world.*operation.real)(); },
          [=](Model& model) { (model.*operation.model)(); }};
}

/// The likely ones more than once.
Step ServiceStep(Dice& dice) {
  return StepOf(dice.OneOf({kRegister, kRegister, kRegister, kUnregister, kUnregister, kRelease,
                            kRefuse, kAllow, kAllow, kDeclare, kDeclare, kUndeclare}));
}

/// What happens to the service's process. It is often a new one.
Step ProcessStep(Dice& dice) {
  if (dice.OneIn(4)) {
    const auto duration = dice.OneOf<int64_t>({0, 1, 1'000'000, dice.UpTo(kDayNs / 8)});
    return {Text("time per atom", {duration}),
            [=](World& world) { world.SetTimePerAtom(std::chrono::nanoseconds(duration)); },
            [=](Model& model) { model.SetTimePerAtom(duration); }};
  }
  return StepOf(dice.OneOf({kProcess, kProcess, kProcess, kStop, kGoOn, kGoOn, kKill}));
}

/// Destroys the engine, and ends the wait in which its thread is, if it is in one.
Step DestroyStep(Dice& dice, const Model& now) {
  Operation release = kRelease;
  if (now.is_blocked() && !now.awaits_process()) release = dice.OneOf({kRelease, kRegister});
  if (now.is_blocked() && now.awaits_process()) release = dice.OneOf({kRelease, kKill});
  if (now.awaits_process() && now.process_is_stopped() && dice.OneIn(2)) release = kGoOn;
  return {std::string("destroy, ") + release.name,
          [=](World& world) { world.DestroyEngine([&] { (world.*release.real)(); }); },
          [=](Model& model) { model.Destroy(release.model); }};
}

Step DiagnosticsStep(Dice& dice) {
  testkit::Diagnostics d;
  d.processor = dice.Maybe<V::ProcessorDiag>();
  for (auto& queue : d.queues) queue = dice.Maybe<V::QueueStress>();
  d.ipc_error_rates = dice.Some<V::IpcErrorRate>();
  d.memory = dice.Some<V::MemoryPressure>();
  d.sensor_usages = dice.Some<V::SensorUsage>();
  d.gating_contexts = dice.Some<V::GatingContext>();
  d.dram_exception = dice.Maybe<V::DramException>();
  d.prox_stats = dice.Maybe<V::AadProxStats>();
  return {"diagnostics", [=](World& world) { world.diagnostics = d; },
          [=](Model& model) { model.SetDiagnostics(d); }};
}

Step TimeStep(Dice& dice, const Model& now) {
  using std::chrono::nanoseconds;
  if (dice.OneIn(8)) {
    const int64_t duration = dice.OneOf<int64_t>({0, 1, dice.UpTo(kDayNs / 3)});
    return {Text("suspend", {duration}),
            [=](World& world) { world.time.Suspend(nanoseconds(duration)); },
            [=](Model& model) { model.Suspend(duration); }};
  }
  if (dice.OneIn(8)) {
    const int64_t instant = now.now_ns() + dice.UpTo(kDayNs / 2);
    return {Text("slip to", {instant}),
            [=](World& world) { world.time.SlipTo(nanoseconds(instant)); },
            [=](Model& model) { model.SlipTo(instant); }};
  }
  const int64_t instant =
      now.now_ns() +
      dice.OneOf<int64_t>({0, 1, dice.UpTo(1'000), dice.UpTo(30'000'000), dice.UpTo(kDayNs / 4),
                           kDayNs / 4, dice.UpTo(3 * kDayNs)});
  return {Text("run to", {instant}), [=](World& world) { world.time.RunTo(nanoseconds(instant)); },
          [=](Model& model) { model.RunTo(instant); }};
}

/// One thing that happens around the engine, or to it as a whole.
Step WorldStep(Dice& dice, const Model& now, bool has_processes) {
  switch (dice.UpTo(12)) {
    case 0: {
      const int reports = static_cast<int>(dice.UpTo(3));
      const auto answer = dice.OneOf({Answer::kOk, Answer::kError, Answer::kNoStatus});
      return {Text("answers", {reports, static_cast<int>(answer)}),
              [=](World& world) { world.service->AnswerNext(reports, answer); },
              [=](Model& model) { model.AnswerNext(reports, answer); }};
    }
    case 1:
      return DiagnosticsStep(dice);
    case 2:
      return now.has_engine() && dice.OneIn(2) ? DestroyStep(dice, now) : TimeStep(dice, now);
    case 3:
    case 4:
    case 5:
    case 6:
      return ServiceStep(dice);
    case 7:
    case 8:
      return has_processes ? ProcessStep(dice) : ServiceStep(dice);
    default:
      return TimeStep(dice, now);
  }
}

/// Calls of an event method of the engine; the model has the same methods. The engine settles after
/// each call.
template <typename Call>
Step Tell(const std::string& text, Call call, int times = 1) {
  return {text,
          [=](World& world) {
            for (int i = 0; i < times; ++i) {
              call(world.engine());
              world.time.WaitUntilSettled();
            }
          },
          [=](Model& model) {
            for (int i = 0; i < times; ++i) call(model);
          }};
}

/// A call of a method that only queues this atom.
template <typename Call>
Step TellOnce(const std::string& text, const VendorAtom& atom, Call call) {
  return {text,
          [=](World& world) {
            call(world.engine());
            world.time.WaitUntilSettled();
          },
          [=](Model& model) { model.Enqueue(atom); }};
}

VendorAtom ProxAtom(const V::TarnVelaProxEvent& event) {
  VendorAtom atom = Atom(100133);
  AddInts(atom, event, 0, 8);
  AddFloats(atom, event, 8, 12);
  AddInts(atom, event, 12, 14);
  AddFloats(atom, event, 14, 17);
  return atom;
}

Step EventStep(Dice& dice, Model& now) {
  const V::SensorId sensor = dice.Sensor();
  const int32_t a = dice.Int();
  const int32_t b = dice.Int();
  const int64_t time = dice.Long();
  switch (dice.UpTo(9)) {
    case 0: {
      VendorAtom atom = Marker(a);
      const int64_t characters =
          dice.OneOf<int64_t>({-1, -1, -1, dice.UpTo(3), now.LongestText(), now.LongestText() + 1});
      if (characters >= 0) {
        atom.values.emplace_back(std::string(static_cast<std::size_t>(characters), 'x'));
      }
      return TellOnce(Text("outside atom", {a, characters}), atom,
                      [=](V& engine) { engine.ReportVendorAtomAsync(atom); });
    }
    case 1:
      return TellOnce(Text("firmware", {a, b, a}), Atom(100244, a, b, a),
                      [=](V& engine) { engine.ReportFirmwareState(a, V::FirmwareState{b}, a); });
    case 2: {
      const auto event = dice.Words<V::TarnVelaProxEvent>();
      return TellOnce("prox", ProxAtom(event),
                      [=](V& engine) { engine.LogSensorProxEvent(event); });
    }
    case 3:
      return TellOnce(Text("hal latency", {a, sensor.high, sensor.low, time}),
                      SensorAtom(100243, sensor, a, time), [=](V& engine) {
                        engine.ReportHalLatency(V::HalOperation{a}, sensor, time);
                      });
    case 4: {
      const int64_t period =
          dice.OneOf<int64_t>({20'000'000, 66'666'666, time, dice.UpTo(1'000'000'000)});
      return Tell(Text("enable", {sensor.high, sensor.low, period}),
                  [=](auto& engine) { engine.ReportHalSensorEnabled(sensor, period); });
    }
    case 5:
      return Tell(Text("disable", {sensor.high, sensor.low}),
                  [=](auto& engine) { engine.ReportHalSensorDisabled(sensor); });
    case 6:
    case 7: {
      // The largest latency of a band or the smallest of the next; the longest gap that is not late
      // or the shortest that is.
      const int64_t latency = dice.OneOf<int64_t>(
          {-1, 0, 2'500'000, 5'000'000, 10'000'000, 20'000'000, dice.UpTo(25'000'000)});
      const int64_t edge = dice.OneOf({now.LastInTime(sensor), now.now_ns() - latency - 1, time});
      const int64_t timestamp = edge == INT64_MAX ? edge : edge + dice.UpTo(1);
      return Tell(Text("sample", {sensor.high, sensor.low, timestamp}),
                  [=](auto& engine) { engine.LogSensorLatency(sensor, timestamp); });
    }
    case 8:
      return TellOnce(Text("first sample", {sensor.high, sensor.low, time}),
                      SensorAtom(100245, sensor, time),
                      [=](V& engine) { engine.ReportFirstSample(sensor, time); });
    default: {
      const bool hal = dice.OneIn(2);
      const int32_t enumerator = dice.OneOf({0, 1, -1, INT32_MIN});
      const int count = dice.OneOf({1, 1, 4, 11});
      return Tell(
          Text("errors", {hal ? 1 : 2, sensor.high, sensor.low, enumerator, a, count}),
          [=](auto& engine) {
            if (hal) {
              engine.LogSensorHalError(sensor, V::HalCall{enumerator}, a);
            } else {
              engine.LogSensorRuntimeError(sensor, V::ErrorType{enumerator}, a);
            }
          },
          count);
    }
  }
}

Step NextStep(Dice& dice, Model& now, bool has_processes) {
  if (!now.has_engine() && dice.OneIn(2)) {
    const auto supplier = dice.OneOf(
        {SupplierKind::kNone, SupplierKind::kFirstGeneration, SupplierKind::kSecondGeneration});
    return {Text("create", {static_cast<int>(supplier)}),
            [=](World& world) { world.StartEngine(supplier); },
            [=](Model& model) { model.Create(supplier); }};
  }
  return now.has_engine() && !dice.OneIn(3) ? EventStep(dice, now)
                                            : WorldStep(dice, now, has_processes);
}

void PrintLines(const char* whose, const Texts& lines, std::size_t first) {
  constexpr std::size_t kShown = 5;
  if (first >= lines.size()) std::printf("  %s (nothing more)\n", whose);
  for (std::size_t i = first; i < std::min(first + kShown, lines.size()); ++i) {
    std::printf("  %s %s\n", whose, lines[i].c_str());
  }
}

/// Prints where the two first differ: the last lines that are equal, and the next of each.
void PrintDifference(const Texts& seen, const Texts& expected) {
  const auto difference = std::ranges::mismatch(seen, expected).in1 - seen.begin();
  const auto first = static_cast<std::size_t>(difference);
  for (std::size_t i = first - std::min<std::size_t>(first, 3); i < first; ++i) {
    std::printf("  both:   %s\n", seen[i].c_str());
  }
  PrintLines("engine:", seen, first);
  PrintLines("model: ", expected, first);
}

/// Makes one run. At the first difference between the engine and the model, prints the steps so far
/// and returns false.
bool RunSeed(std::uint64_t seed, int steps, bool print, SimulationObserver& observer,
             int64_t& run_ns) {
  if (print) std::fprintf(stderr, "seed %llu\n", static_cast<unsigned long long>(seed));
  Dice dice(seed);
  World world;
  Model model;
  std::vector<std::string> done;
  for (int i = 0; i < steps; ++i) {
    const Step step = NextStep(dice, model, observer.HasProcesses());
    done.push_back(step.text);
    if (print) std::fprintf(stderr, "%s\n", step.text.c_str());
    if (step.text.starts_with("create")) observer.EngineStarts();
    step.real(world);
    step.model(model);
    const Texts history = world.TakeHistory();
    world.TakeAtoms();
    observer.Happened(history);
    const Texts expected = std::exchange(model.history, {});
    if (history == expected) continue;
    std::printf("seed %llu: the engine and the model differ after step %d:\n",
                static_cast<unsigned long long>(seed), i + 1);
    for (const std::string& text : done) std::printf("  %s\n", text.c_str());
    PrintDifference(history, expected);
    return false;
  }
  world.DestroyEngine();
  observer.Happened(world.TakeHistory());
  run_ns += model.now_ns();
  return true;
}

}  // namespace

int RunSimulation(int argc, char** argv, SimulationObserver& observer) {
  std::uint64_t first = 1;
  std::uint64_t seeds = 300;
  int steps = 80;
  CLI::App app("Holds the engine against a model of it through random runs.");
  app.add_option("--first", first, "the first seed")->capture_default_str();
  app.add_option("--seeds", seeds, "how many runs")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  app.add_option("--steps", steps, "steps in a run")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  bool print = false;
  app.add_flag("--print", print,
               "print each seed and step before it is run, which shows where a run crashes");
  CLI11_PARSE(app, argc, argv);

  std::int64_t run_ns = 0;
  double days = 0;
  for (std::uint64_t seed = first; seed - first < seeds; ++seed) {
    run_ns = 0;
    if (!RunSeed(seed, steps, print, observer, run_ns) || !observer.RunEnds()) {
      std::printf("again: --first %llu --seeds 1 --steps %d\n",
                  static_cast<unsigned long long>(seed), steps);
      return 1;
    }
    days += static_cast<double>(run_ns) / static_cast<double>(kDayNs);
  }
  std::printf("%llu seeds, %llu steps, %.0f device-days\n", static_cast<unsigned long long>(seeds),
              static_cast<unsigned long long>(seeds) * static_cast<unsigned long long>(steps),
              days);
  return 0;
}

}  // namespace sensorvela::testing
