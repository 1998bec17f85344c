// Drives a real engine and the model with the same random life and holds their effects against each
// other after every step. A seed stands for a whole life and can be given by hand.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/simulation_model.h"
#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

using std::int32_t;
using std::int64_t;
using V = SensorVela;
constexpr std::int64_t kDayNs = 86'400'000'000'000;

void AnswerNext(World& world, int reports, Answer answer) {
  world.answer = [=](const VendorAtom&) mutable {
    if (reports-- <= 0 || answer == Answer::kOk) return ndk::ScopedAStatus::ok();
    return answer == Answer::kNoStatus ? ndk::ScopedAStatus()
                                       : ndk::ScopedAStatus::fromStatus(STATUS_FAILED_TRANSACTION);
  };
}

void Destroy(World& world, bool is_blocked, bool comes_up) {
  std::thread destruction = world.BeginStop();
  if (is_blocked) comes_up ? world.Register() : host::ReleaseServiceWaits(kInstance);
  destruction.join();
}

/// Random values that like the edges.
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

  /// Any bits at all, and edges more often.
  int32_t Int() {
    return OneIn(2) ? OneOf({0, 1, -1, 3, INT32_MAX, INT32_MIN}) : static_cast<int32_t>(Bits());
  }
  int64_t Long() {
    return OneIn(2) ? OneOf<int64_t>({0, 1, -1, INT64_MAX, INT64_MIN, int64_t{1} << 32})
                    : static_cast<int64_t>(Bits());
  }
  float Float() { return std::bit_cast<float>(Int()); }
  V::SensorId Sensor() { return {OneOf({0U, 1U, 0xFFFFFFFFU}), OneOf({0, -1, INT32_MIN})}; }

  /// A plain record of 32-bit fields with every bit drawn, then those of other types by `Fix`.
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

/// One step of a life, done by both.
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

/// What happens around the engine, or to it as a whole.
Step WorldStep(Dice& dice, const Model& now) {
  switch (dice.UpTo(11)) {
    case 0:
      return {"declare", [](World&) { host::DeclareService(kInstance); },
              [](Model& model) { model.Declare(); }};
    case 1:
      if (dice.OneIn(3)) {
        return {"undeclare", [](World&) { host::UndeclareService(kInstance); },
                [](Model& model) { model.Undeclare(); }};
      }
      [[fallthrough]];
    case 2:
    case 3:
      return {"register", [](World& world) { world.Register(); },
              [](Model& model) { model.Register(); }};
    case 4:
      return {"unregister", [](World&) { host::UnregisterService(kInstance); },
              [](Model& model) { model.Unregister(); }};
    case 5:
      return {"release waits", [](World&) { host::ReleaseServiceWaits(kInstance); },
              [](Model& model) { model.ReleaseWaits(); }};
    case 6: {
      const int reports = static_cast<int>(dice.UpTo(3));
      const Answer answer = dice.OneOf({Answer::kOk, Answer::kError, Answer::kNoStatus});
      return {Text("answers", {reports, static_cast<int>(answer)}),
              [=](World& world) { AnswerNext(world, reports, answer); },
              [=](Model& model) { model.AnswerNext(reports, answer); }};
    }
    case 7: {
      Diagnostics d;
      d.processor = dice.Maybe<V::ProcessorDiag>();
      for (auto& queue : d.queues) queue = dice.Maybe<V::QueueStress>();
      d.ipc = dice.Some<V::IpcErrorRate>();
      d.memory = dice.Some<V::MemoryPressure>();
      d.usages = dice.Some<V::SensorUsage>();
      d.gating = dice.Some<V::GatingContext>();
      d.dram = dice.Maybe<V::DramException>();
      d.prox = dice.Maybe<V::AadProxStats>();
      return {"diagnostics", [=](World& world) { world.diagnostics = d; },
              [=](Model& model) { model.SetDiagnostics(d); }};
    }
    case 8:
      if (dice.OneIn(2)) {
        const int64_t instant = now.now_ns() + dice.UpTo(kDayNs / 2);
        return {Text("slip to", {instant}),
                [=](World& world) { world.time.SlipTo(std::chrono::nanoseconds(instant)); },
                [=](Model& model) { model.SlipTo(instant); }};
      }
      [[fallthrough]];
    case 9: {
      const bool comes_up = dice.OneIn(2);
      if (!now.has_engine() || !dice.OneIn(4)) break;
      return {Text("destroy", {comes_up}),
              [=, blocked = now.is_blocked()](World& world) { Destroy(world, blocked, comes_up); },
              [=](Model& model) { model.Destroy(comes_up); }};
    }
    default:
      break;
  }
  const int64_t instant =
      now.now_ns() +
      dice.OneOf<int64_t>({0, 1, dice.UpTo(1'000), dice.UpTo(30'000'000), dice.UpTo(kDayNs / 4),
                           kDayNs / 4, dice.UpTo(3 * kDayNs)});
  return {Text("run to", {instant}),
          [=](World& world) { world.time.RunTo(std::chrono::nanoseconds(instant)); },
          [=](Model& model) { model.RunTo(instant); }};
}

/// What the host tells the engine.
Step EventStep(Dice& dice, const Model& now) {
  const V::SensorId sensor = dice.Sensor();
  switch (dice.UpTo(8)) {
    case 0: {
      const VendorAtom atom = Marker(dice.Int());
      return {"outside atom " + Show(atom),
              [=](World& world) { world.engine->ReportVendorAtomAsync(atom); },
              [=](Model& model) { model.OutsideAtom(Show(atom)); }};
    }
    case 1: {
      const int32_t subject = dice.Int(), state = dice.Int(), detail = dice.Int();
      return {Text("firmware", {subject, state, detail}),
              [=](World& world) {
                world.engine->ReportFirmwareState(subject, V::FirmwareState{state}, detail);
              },
              [=](Model& model) { model.Firmware(subject, state, detail); }};
    }
    case 2: {
      const auto event = dice.Words<V::TarnVelaProxEvent>();
      return {"prox", [=](World& world) { world.engine->LogSensorProxEvent(event); },
              [=](Model& model) { model.Prox(event); }};
    }
    case 3: {
      const int32_t operation = dice.Int();
      const int64_t latency = dice.Long();
      return {Text("hal latency", {operation, sensor.high, sensor.low, latency}),
              [=](World& world) {
                world.engine->ReportHalLatency(V::HalOperation{operation}, sensor, latency);
              },
              [=](Model& model) { model.HalLatency(operation, sensor, latency); }};
    }
    case 4: {
      const int64_t period =
          dice.OneOf<int64_t>({20'000'000, 66'666'666, dice.Long(), dice.UpTo(1'000'000'000)});
      return {Text("enable", {sensor.high, sensor.low, period}),
              [=](World& world) { world.engine->ReportHalSensorEnabled(sensor, period); },
              [=](Model& model) { model.Enable(sensor, period); }};
    }
    case 5:
      return {Text("disable", {sensor.high, sensor.low}),
              [=](World& world) { world.engine->ReportHalSensorDisabled(sensor); },
              [=](Model& model) { model.Disable(sensor); }};
    case 6: {
      const int64_t latency = dice.OneOf<int64_t>({-1, 0, 2'500'000, 5'000'000, 10'000'000,
                                                   20'000'000, dice.UpTo(25'000'000)}) +
                              dice.UpTo(1);
      const int64_t timestamp = dice.OneIn(8) ? dice.Long() : now.now_ns() - latency;
      return {Text("sample", {sensor.high, sensor.low, timestamp}),
              [=](World& world) { world.engine->LogSensorLatency(sensor, timestamp); },
              [=](Model& model) { model.Sample(sensor, timestamp); }};
    }
    case 7: {
      const int64_t latency = dice.Long();
      return {Text("first sample", {sensor.high, sensor.low, latency}),
              [=](World& world) { world.engine->ReportFirstSample(sensor, latency); },
              [=](Model& model) { model.FirstSample(sensor, latency); }};
    }
    default: {
      const bool hal = dice.OneIn(2);
      const int32_t enumerator = dice.OneOf({0, 1, -1, INT32_MIN}), code = dice.Int();
      const auto count = dice.OneOf({1, 1, 4, 11});
      return {Text("errors", {hal, sensor.high, sensor.low, enumerator, code, count}),
              [=](World& world) {
                for (int i = 0; i < count; ++i) {
                  hal ? world.engine->LogSensorHalError(sensor, V::HalCall{enumerator}, code)
                      : world.engine->LogSensorRuntimeError(sensor, V::ErrorType{enumerator}, code);
                  world.time.WaitUntilSettled();
                }
              },
              [=](Model& model) {
                for (int i = 0; i < count; ++i) model.Error(hal, sensor, enumerator, code);
              }};
    }
  }
}

Step NextStep(Dice& dice, const Model& now) {
  if (!now.has_engine() && dice.OneIn(2)) {
    const auto generation =
        dice.OneOf({Generation::kNone, Generation::kFirst, Generation::kSecond});
    return {Text("create", {static_cast<int>(generation)}),
            [=](World& world) { world.Start(generation); },
            [=](Model& model) { model.Create(generation); }};
  }
  return now.has_engine() && !dice.OneIn(3) ? EventStep(dice, now) : WorldStep(dice, now);
}

void PrintDifference(const std::vector<std::string>& seen,
                     const std::vector<std::string>& expected) {
  for (std::size_t i = 0; i < std::max(seen.size(), expected.size()); ++i) {
    const std::string nothing = "(nothing)";
    const std::string& is = i < seen.size() ? seen[i] : nothing;
    const std::string& should = i < expected.size() ? expected[i] : nothing;
    if (is == should) continue;
    std::printf("  engine: %s\n  model:  %s\n", is.c_str(), should.c_str());
  }
}

/// One life. False, with the steps up to the first difference printed, when the two disagree.
bool Live(std::uint64_t seed, int steps, int64_t& lived_ns) {
  Dice dice(seed);
  World world;
  Model model;
  std::vector<std::string> done;
  for (int i = 0; i < steps; ++i) {
    const Step step = NextStep(dice, model);
    done.push_back(step.text);
    step.real(world);
    step.model(model);
    const std::vector<std::string> seen = world.Seen();
    const std::vector<std::string> expected = std::exchange(model.seen, {});
    if (seen == expected) continue;
    std::printf("seed %llu: the engine and the model differ after step %d:\n",
                static_cast<unsigned long long>(seed), i + 1);
    for (const std::string& text : done) std::printf("  %s\n", text.c_str());
    PrintDifference(seen, expected);
    return false;
  }
  lived_ns += model.now_ns();
  return true;
}

}  // namespace
}  // namespace sensorvela::testing

int main(int argc, char** argv) {
  std::uint64_t first = 1;
  std::uint64_t seeds = 300;
  int steps = 80;
  CLI::App app("Holds the engine against a model of it through random lives.");
  app.add_option("--first", first, "the first seed")->capture_default_str();
  app.add_option("--seeds", seeds, "how many lives")->capture_default_str();
  app.add_option("--steps", steps, "steps in a life")->capture_default_str();
  CLI11_PARSE(app, argc, argv);

  std::int64_t lived_ns = 0;
  double days = 0;
  for (std::uint64_t seed = first; seed - first < seeds; ++seed) {
    lived_ns = 0;
    if (!sensorvela::testing::Live(seed, steps, lived_ns)) {
      std::printf("again: --first %llu --seeds 1 --steps %d\n",
                  static_cast<unsigned long long>(seed), steps);
      return 1;
    }
    days += static_cast<double>(lived_ns) / static_cast<double>(sensorvela::testing::kDayNs);
  }
  std::printf("%llu seeds, %llu steps, %.0f device-days\n", static_cast<unsigned long long>(seeds),
              static_cast<unsigned long long>(seeds) * static_cast<unsigned long long>(steps),
              days);
  return 0;
}
