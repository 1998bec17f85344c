// The recorder is linked in front of the library, which is the same as to load it there.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/auxv.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/atom_text.h>
#include <sensorvela/testkit/world.h>

#include "tests/library/call_counts.h"
#include "tests/library/test_support.h"
#include "tests/recorder/recording_host.h"
#include "tests/tools/trace_files.h"
#include "tools/report/text_report.h"
#include "tools/run/replay.h"
#include "tools/trace/trace.h"

#ifndef SENSORVELA_RECORDING_HOST
#define SENSORVELA_RECORDING_HOST ""  // A host of another architecture cannot be started.
#endif

namespace {
bool has_raised_privileges = false;
}  // namespace

// Takes the place of the C library's.
extern "C" unsigned long getauxval(unsigned long type) noexcept {
  static const auto next =
      reinterpret_cast<unsigned long (*)(unsigned long)>(dlsym(RTLD_NEXT, "getauxval"));
  return type == AT_SECURE && has_raised_privileges ? 1 : next(type);
}

namespace sensorvela::testing {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;
using testkit::World;

/// Keeps the atoms that a replay reports.
class Atoms : public tools::RunObserver {
 public:
  void OnAtom(Instant /*at*/, const tools::AtomFact& fact) override {
    if (fact.atom != nullptr) texts.push_back(testkit::AtomText(*fact.atom));
  }
  Texts texts;
};

struct Replayed {
  Texts atoms;
  /// Where the recording was cut.
  std::string cut;
};

Replayed ReplayOf(const std::string& path) {
  const tools::Trace trace(path, tools::OpenTrace(path));
  Atoms atoms;
  tools::Replay({&atoms}, false).Run(trace.Events());
  return {atoms.texts, trace.cut()};
}

/// What the tool prints for a trace since the engine's start, without its notes, the names of its
/// sensors and the outages of the service: nobody tells an engine of those. Also without the lines
/// that name lines of the trace.
std::string Printed(const std::string& path) {
  const tools::Trace trace(path, tools::OpenTrace(path));
  std::ostringstream out;
  const tools::SensorNames no_names;
  tools::Replay({tools::MakeTextReport(out, no_names, {.wide = true}).get()}, true)
      .Run(trace.Events());
  std::istringstream lines(out.str());
  std::string printed;
  for (std::string line; std::getline(lines, line);) {
    const bool is_start = line.find("Waiting for") != std::string::npos ||
                          line.find("is not registered") != std::string::npos;
    if (is_start) printed.clear();
    const bool is_of_the_trace = line.find("  # ") != std::string::npos ||
                                 line.find("  service ") != std::string::npos ||
                                 line.find("  DROPPED ") != std::string::npos ||
                                 line.find("  BLOCKED ") != std::string::npos;
    // The recording has the event that had a lost atom queued on another line.
    if (!is_of_the_trace) printed += line.substr(0, line.find("  queued by ")) + '\n';
  }
  return printed;
}

class RecorderTest : public ::testing::Test {
 protected:
  RecorderTest() {
    fs::create_directory(folder_);
    setenv("SENSORVELA_RECORDING_WAIT", "1", 1);
  }
  ~RecorderTest() override {
    StopRecording();
    fs::remove_all(folder_);
  }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  /// The engines that start from now on are recorded.
  std::string Record(const std::string& name) const {
    setenv("SENSORVELA_RECORDING", Path(name).c_str(), 1);
    return Path(name);
  }
  static void StopRecording() { unsetenv("SENSORVELA_RECORDING"); }

  /// What an engine sends for a few events in virtual time, and what is logged by others than the
  /// library.
  static Texts AtomsOfAShortLife() {
    World world;
    world.StartEngine();
    for (int i = 0; i < 4; ++i) {
      CallMethodsOfEveryKind(world.engine());
      world.time.RunFor(std::chrono::hours(3));
    }
    const Texts atoms = world.TakeAtomTexts();
    world.DestroyEngine();
    others_lines.clear();
    for (const std::string& line : world.TakeHistory()) {
      if (line.find("sensor-vela-recorder") != std::string::npos) others_lines.push_back(line);
    }
    return atoms;
  }

  static inline Texts others_lines;

 private:
  const fs::path folder_ =
      fs::path(::testing::TempDir()) / ("recorder-" + std::to_string(getpid()));
};

/// A process that is recorded.
class RecordedHost {
 public:
  RecordedHost() {
    std::array<int, 2> input = {};
    EXPECT_EQ(pipe2(input.data(), O_CLOEXEC), 0);
    input_ = input[1];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    std::string path = SENSORVELA_RECORDING_HOST;
    const std::array<char*, 2> arguments = {path.data(), nullptr};
    EXPECT_EQ(posix_spawn(&process_, path.c_str(), &actions, nullptr, arguments.data(), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
  }
  RecordedHost(const RecordedHost&) = delete;
  RecordedHost& operator=(const RecordedHost&) = delete;

  void Kill() const { kill(process_, SIGKILL); }
  void CloseInputAndWait() const {
    close(input_);
    waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_ = 0;
  int input_ = -1;
};

class RecordedReplayTest : public RecorderTest,
                           public ::testing::WithParamInterface<std::string> {};

TEST_P(RecordedReplayTest, AReplayOfARecordedReplayPrintsTheSame) {
  for (const char* const name : {"run.jsonl", "run.jsonl.gz"}) {
    const std::string recording = Record(name);
    const std::string printed = Printed(SourcePath(GetParam()) + ".jsonl");
    StopRecording();
    const std::string replayed = Printed(recording);
    // The one line of its summary that only a recording has.
    const std::size_t unknown = replayed.find("lost in buffer              -  unknown: ");
    ASSERT_NE(unknown, std::string::npos);
    const std::size_t next = replayed.find('\n', unknown) + 1;
    EXPECT_EQ(replayed.substr(0, unknown) + replayed.substr(next), printed);
  }
}

/// Those in which the service has no process of its own: a recording does not tell when a process
/// took an atom.
Texts AllTraces() {
  Texts traces = TracesIn("tests/traces");
  for (const std::string& example : TracesIn("examples")) traces.push_back(example);
  std::erase_if(traces, [](const std::string& trace) {
    return Content(SourcePath(trace) + ".jsonl").find("atom_ns") != std::string::npos;
  });
  return traces;
}

INSTANTIATE_TEST_SUITE_P(Traces, RecordedReplayTest, ::testing::ValuesIn(AllTraces()),
                         [](const auto& test) {
                           const std::string& path = test.param;
                           return path.substr(0, path.find('/')) + "_" + TraceName(path);
                         });

// A lookup of a service that has just died gets a binder and no interface.
TEST_F(RecorderTest, TellsADeadServiceFromOneThatWasFound) {
  const std::string recording = Record("run.jsonl");
  {
    World world;
    world.RegisterServiceProcess();
    SensorVela& engine = world.StartEngine(testkit::SupplierKind::kNone);
    world.time.WaitUntilAtRest();
    world.StopServiceProcess();
    engine.ReportFirmwareState(1, {}, 1);
    engine.ReportFirmwareState(2, {}, 2);
    world.KillServiceProcess();
    world.time.WaitUntilSettled();
    world.RegisterServiceProcess();
    world.time.WaitUntilAtRest();
    engine.ReportFirmwareState(3, {}, 3);
    world.time.WaitUntilAtRest();
  }
  StopRecording();
  const tools::Trace trace(recording, tools::OpenTrace(recording));
  struct : tools::RunObserver {
    void OnRunEnd(Instant /*at*/, const tools::Summary& end) override { summary = end; }
    tools::Summary summary;
  } last;
  tools::Replay replay({&last}, false);
  replay.Run(trace.Events());
  EXPECT_FALSE(replay.divergence());
  EXPECT_EQ(last.summary.dropped, 2u);
  EXPECT_EQ(last.summary.delivered, 1u);
}

TEST_F(RecorderTest, FollowsEightThreadsOnTheRealClocks) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 400;
  const auto service = ndk::SharedRefBase::make<testkit::StatsService>();
  simulated::RegisterService(testkit::kStatsInstance, service);
  const std::string recording = Record("threads.jsonl.gz");
  {
    SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&engine] {
        for (int round = 0; round < kRounds; ++round) CallMethodsOfEveryKind(engine);
      });
    }
    // The service comes and goes meanwhile.
    for (std::size_t atoms = 1000; atoms < 5000; atoms += 1000) {
      service->WaitForAtoms(atoms);
      simulated::UnregisterService(testkit::kStatsInstance);
      std::this_thread::yield();
      simulated::RegisterService(testkit::kStatsInstance, service);
    }
    for (std::thread& thread : threads) thread.join();
  }  // Atoms that have not been sent by now are lost, in the replay too.
  StopRecording();
  simulated::ResetServices();
  Texts received;
  for (const auto& atom : service->TakeAtoms()) received.push_back(testkit::AtomText(atom));
  EXPECT_EQ(ReplayOf(recording).atoms, received);
}

TEST_F(RecorderTest, KeepsTheOrderOfASupplierThatCallsTheEngine) {
  const std::string recording = Record("supplier.jsonl");
  Texts sent;
  {
    World world;
    world.diagnostics.ipc_error_rates.resize(2);
    world.diagnostics.processor = SensorVela::ProcessorDiag{1, 2, 3, 4};
    world.diagnostics.prox_stats = SensorVela::AadProxStats{};
    world.on_ask = [&](testkit::DiagnosticsItem asked) {
      // Past the cap, which is logged, and beside a call of the device that is not the engine's.
      world.engine().LogSensorHalError({1, 1}, SensorVela::HalCall{1}, 0);
      EXPECT_FALSE(ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT).isOk());
      world.engine().ReportFirmwareState(static_cast<int>(asked), SensorVela::FirmwareState{1}, 0);
    };
    world.StartEngine();
    world.time.RunFor(std::chrono::hours(13));
    sent = world.TakeAtomTexts();
    world.DestroyEngine();
  }
  StopRecording();
  EXPECT_EQ(sent.size(), 2U * (14 + 10));
  EXPECT_EQ(ReplayOf(recording).atoms, sent);
}

TEST_F(RecorderTest, WritesAFileForItsOwnerForEachEngine) {
  const std::string recording = Record("engine.jsonl");
  const Texts sent = AtomsOfAShortLife();
  AtomsOfAShortLife();
  fs::create_symlink("elsewhere", Path("link"));
  Record("link");
  EXPECT_EQ(AtomsOfAShortLife(), sent);
  has_raised_privileges = true;
  Record("privileged.jsonl");
  AtomsOfAShortLife();
  has_raised_privileges = false;
  StopRecording();

  for (const std::string& path : {recording, Path("engine-2.jsonl")}) {
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0) << path;
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(ReplayOf(path).atoms, sent);
  }
  EXPECT_FALSE(fs::exists(Path("elsewhere")) || fs::exists(Path("link-2")));
  EXPECT_FALSE(fs::exists(Path("privileged.jsonl")));
}

TEST_F(RecorderTest, RecordsEightEnginesAtATime) {
  Record("many.jsonl");
  const auto files = [&] {
    return std::distance(fs::directory_iterator(Path("")), fs::directory_iterator());
  };
  const World world;
  const auto start = [] {
    return std::make_unique<SensorVela>(std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>());
  };
  std::vector<std::unique_ptr<SensorVela>> engines(9);
  std::ranges::generate(engines, start);
  engines.pop_back();  // It was not recorded, so the next one is not either.
  engines.push_back(start());
  engines.clear();
  EXPECT_EQ(files(), 8);
  start().reset();
  EXPECT_EQ(files(), 9);
}

TEST_F(RecorderTest, EndsWithOneLineInTheLogWhenItCannotWrite) {
  const Texts sent = AtomsOfAShortLife();
  const auto logs = [&](const std::string& reason) {
    return Texts{"E sensor-vela-recorder: The recording " + reason + "."};
  };
  const std::string nowhere = Record("no/such/folder.jsonl");
  EXPECT_EQ(AtomsOfAShortLife(), sent);
  EXPECT_EQ(others_lines, logs(nowhere + " has ended: No such file or directory"));

  const std::string refused = Record("refused.jsonl");
  {
    World world;
    std::optional<RefusedThreads> no_threads(std::in_place);
    EXPECT_THROW(world.StartEngine(), std::system_error);
    no_threads.reset();
    EXPECT_TRUE(world.TakeHistory().at(0).starts_with("E sensor-vela-recorder: The recording " +
                                                      refused + " has ended: "));
  }

  const std::string large = Record("large.jsonl");
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small = {4000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_EQ(AtomsOfAShortLife(), sent);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(others_lines, logs(large + " has ended: File too large"));
  StopRecording();
  const Replayed replayed = ReplayOf(large);
  EXPECT_FALSE(replayed.cut.empty());
  ASSERT_FALSE(replayed.atoms.empty());
  EXPECT_TRUE(std::equal(replayed.atoms.begin(), replayed.atoms.end(), sent.begin()));
}

// The recording's lines are whole up to the cut, wherever that is.
TEST_F(RecorderTest, LeavesWhatCameBeforeACut) {
  for (const char* const name : {"whole.jsonl", "whole.jsonl.gz"}) {
    const std::string recording = Record(name);
    const Texts sent = AtomsOfAShortLife();
    StopRecording();
    std::ifstream file(recording, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    const std::string cut = Path("cut");
    std::size_t longest = 0;
    for (std::size_t size = 0; size < whole.size(); size += size + 117 < whole.size() ? 97 : 1) {
      std::ofstream(cut, std::ios::binary) << whole.substr(0, size) << std::string(size % 3, '\0');
      try {
        const Replayed replayed = ReplayOf(cut);
        EXPECT_TRUE(replayed.cut.starts_with(cut + ":") || replayed.atoms == sent) << replayed.cut;
        ASSERT_LE(replayed.atoms.size(), sent.size());
        EXPECT_TRUE(std::equal(replayed.atoms.begin(), replayed.atoms.end(), sent.begin()));
        longest = std::max(longest, replayed.atoms.size());
      } catch (const tools::TraceError& error) {
        // Cut before the engine's start, or in what tells that the data is whole, with zeros there.
        EXPECT_TRUE(longest == 0 || size + 20 > whole.size()) << error.what();
      }
    }
    EXPECT_GT(longest, sent.size() / 2);
    EXPECT_EQ(ReplayOf(recording).cut, "");
  }
}

// The file grows while the host lives, so little is lost when it is killed, and nothing when it
// ends.
TEST_F(RecorderTest, LeavesARecordingOfAHostThatIsKilledOrEnds) {
  if (std::string(SENSORVELA_RECORDING_HOST).empty()) GTEST_SKIP() << "under an emulator";
  unsetenv("SENSORVELA_RECORDING_WAIT");
  const int watch = inotify_init1(IN_CLOEXEC);
  ASSERT_GE(inotify_add_watch(watch, Path("").c_str(), IN_MODIFY), 0);
  for (const bool is_killed : {true, false}) {
    const std::string recording = Record(is_killed ? "killed.jsonl" : "ends.jsonl");
    RecordedHost host;
    StopRecording();
    if (is_killed) {
      const auto is_recorded = [&] {
        const std::string text = Content(recording);
        const std::size_t last_event = text.find("firmware_state");
        return last_event != std::string::npos && text.find("lookup", last_event) < text.size();
      };
      std::array<char, 4096> changes;
      while (!is_recorded()) ASSERT_GT(read(watch, changes.data(), changes.size()), 0);
      host.Kill();
    }
    host.CloseInputAndWait();
    const Replayed replayed = ReplayOf(recording);
    EXPECT_EQ(replayed.cut.empty(), !is_killed);
    // The other ends before it has sent all.
    if (is_killed) {
      EXPECT_EQ(replayed.atoms.size(), 11U);
    }
  }
  close(watch);
}

TEST_F(RecorderTest, AllocatesNothingForASampleAndLittleInAll) {
  if (!kCallsAreCounted) GTEST_SKIP() << "the sanitizer has the heap";
  constexpr std::int64_t kMaxBytes = 4'000'000;  // Without zlib's.
  const std::int64_t before_bytes = HeapBytesInUse();
  World world;
  Record("samples.jsonl");
  SensorVela& engine = world.StartEngine();
  const SensorVela::SensorId sensor = {1, 1};
  engine.ReportHalSensorEnabled(sensor, 20'000'000);
  engine.LogSensorLatency(sensor, 0);
  world.time.WaitUntilAtRest();
  const int before = CallsOfThisThread().allocations;
  for (int i = 0; i < 200'000; ++i) engine.LogSensorLatency(sensor, i);
  EXPECT_EQ(CallsOfThisThread().allocations, before);
  EXPECT_LT(HeapBytesInUse() - before_bytes, kMaxBytes);
}

}  // namespace
}  // namespace sensorvela::testing
