// The simulation's runs again, recorded: the replay of each engine's recording must show the same
// log lines and atoms.
#include <android/log.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <sensorvela/testkit/atom_text.h>

#include "tests/simulation/simulation.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::testing {
namespace {

using Texts = std::vector<std::string>;

/// Keeps what a replay shows, in the form of `World::TakeHistory`.
class History : public tools::RunObserver {
 public:
  void OnAtom(Instant /*at*/, const tools::AtomFact& fact) override {
    if (fact.atom != nullptr) texts.push_back(testkit::AtomText(*fact.atom));
  }
  void OnLogLine(Instant /*at*/, int priority, std::string_view /*tag*/,
                 std::string_view text) override {
    texts.push_back((priority == ANDROID_LOG_ERROR ? "E " : "I ") + std::string(text));
  }

  Texts texts;
};

Texts Replayed(const std::string& path) {
  const tools::Trace trace(path, tools::OpenTrace(path));
  History history;
  tools::Replay({&history}, true).Run(trace.Events());
  return history.texts;
}

class RecordedRuns : public SimulationObserver {
 public:
  // A recording does not tell when a process took an atom, or whether it did.
  bool HasProcesses() override { return false; }

  void EngineStarts() override {
    engines_.push_back({Path(engines_.size()), {}});
    std::filesystem::remove(engines_.back().path);  // Of a simulation that failed.
    setenv("SENSORVELA_RECORDING", engines_.back().path.c_str(), 1);
    setenv("SENSORVELA_RECORDING_WAIT", "1", 1);
  }

  void Happened(const Texts& history) override {
    if (engines_.empty()) return;
    Texts& texts = engines_.back().history;
    texts.insert(texts.end(), history.begin(), history.end());
  }

  bool RunEnds() override {
    unsetenv("SENSORVELA_RECORDING");
    bool same = true;
    for (const Engine& engine : engines_) same = same && IsTheSame(engine);
    if (same) {
      for (const Engine& engine : engines_) std::filesystem::remove(engine.path);
    }
    engines_.clear();
    return same;
  }

 private:
  struct Engine {
    std::string path;
    Texts history;
  };

  static std::string Path(std::size_t number) {
    return std::filesystem::current_path() / ("run-" + std::to_string(number) + ".jsonl");
  }

  static bool IsTheSame(const Engine& engine) {
    const Texts replayed = Replayed(engine.path);
    for (std::size_t i = 0; i < std::max(replayed.size(), engine.history.size()); ++i) {
      const auto at = [i](const Texts& texts) {
        return i < texts.size() ? texts[i].c_str() : "(nothing)";
      };
      if (std::string_view(at(replayed)) == at(engine.history)) continue;
      std::printf("%s, text %zu:\n  run:    %s\n  replay: %s\n", engine.path.c_str(), i,
                  at(engine.history), at(replayed));
      return false;
    }
    return true;
  }

  std::vector<Engine> engines_;
};

}  // namespace
}  // namespace sensorvela::testing

int main(int argc, char** argv) {
  sensorvela::testing::RecordedRuns runs;
  return sensorvela::testing::RunSimulation(argc, argv, runs);
}
