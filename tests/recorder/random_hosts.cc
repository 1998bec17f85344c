// Random hosts of nine threads, recorded: the replay of each recording must send what the host's
// service received. Of hosts that are killed, it must send the beginning of that.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utils/SystemClock.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>
#include <sensorvela/testkit/atom_text.h>
#include <sensorvela/testkit/destroy_engine.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

#include "tools/run/replay.h"
#include "tools/trace/trace.h"

namespace sensorvela::testing {
namespace {

using testkit::Answer;
using testkit::DiagnosticsItem;
using testkit::kStatsInstance;
using testkit::StatsService;
using testkit::SupplierKind;
using Texts = std::vector<std::string>;

constexpr int kThreads = 9;

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}
  /// From 0 to `below` - 1.
  int Below(int below) { return static_cast<int>(engine_() % static_cast<unsigned>(below)); }
  bool OneIn(int times) { return Below(times) == 0; }

 private:
  std::mt19937_64 engine_;
};

std::string ReportText(const SensorVela::VendorAtom& atom, Answer answer) {
  constexpr std::array kAnswers = {"", " failed", " silent"};
  return testkit::AtomText(atom) + kAnswers.at(static_cast<std::size_t>(answer));
}

/// Makes one call of the engine.
void Call(SensorVela& engine, Random& random) {
  const SensorVela::SensorId sensor = {1, random.Below(3)};
  switch (random.Below(9)) {
    case 0:
      engine.ReportHalSensorEnabled(sensor, 1'000'000LL * random.Below(30));
      break;
    case 1:
      engine.ReportHalSensorDisabled(sensor);
      break;
    case 2:
    case 3:
      engine.LogSensorHalError(sensor, SensorVela::HalCall{random.Below(2)}, random.Below(9));
      break;
    case 4:
      engine.LogSensorRuntimeError(sensor, SensorVela::ErrorType{1}, random.Below(9));
      break;
    case 5:
      engine.ReportFirmwareState(random.Below(1000), SensorVela::FirmwareState{1}, 0);
      break;
    default:
      engine.LogSensorLatency(sensor, android::elapsedRealtimeNano() - random.Below(30'000'000));
      break;
  }
}

/// An engine, its service and supplier, and nine threads that call it, in virtual time.
class Host {
 public:
  explicit Host(std::uint64_t seed) : seed_(seed), random_(seed) {}

  /// Returns what the service received, in order, with its answers.
  Texts Live() {
    const auto kind = static_cast<SupplierKind>(random_.Below(3));
    if (random_.OneIn(2)) simulated::DeclareService(kStatsInstance);
    if (random_.OneIn(2)) simulated::RegisterService(kStatsInstance, service_);
    engine_ = testkit::MakeEngine(kind, [this](DiagnosticsItem asked) { return AnswerOf(asked); });
    called_ = engine_.get();
    std::vector<std::thread> threads;
    for (int i = 1; i <= kThreads; ++i) {
      threads.emplace_back(
          [this, random = Random(seed_ * 100 + static_cast<unsigned>(i))]() mutable {
            for (int calls = 20 + random.Below(200); calls > 0; --calls) Call(*engine_, random);
            --running_;
          });
    }
    while (running_ > 0) Change();
    for (std::thread& thread : threads) thread.join();
    End();
    simulated::ResetServices();
    return received_;
  }

 private:
  /// Something happens around the engine.
  void Change() {
    switch (random_.Below(10)) {
      case 0:
        simulated::RegisterService(kStatsInstance, service_);
        break;
      case 1:
        simulated::UnregisterService(kStatsInstance);
        break;
      case 2:
        simulated::RefuseService(kStatsInstance);
        break;
      case 3:
      case 4:
        simulated::AllowService(kStatsInstance);
        break;
      case 5:
        service_->AnswerNext(1 + random_.Below(3),
                             random_.OneIn(2) ? Answer::kError : Answer::kNoStatus);
        break;
      case 6:
        time_.JumpTo(time_.Now() + std::chrono::hours(random_.Below(7)));
        break;
      case 7:
        simulated::ReleaseServiceWaits(kStatsInstance);
        break;
      default:
        for (int yields = random_.Below(20); yields > 0; --yields) std::this_thread::yield();
    }
  }

  /// Destroys the engine, perhaps with atoms queued.
  void End() {
    simulated::AllowService(kStatsInstance);
    if (random_.OneIn(2)) {
      simulated::RegisterService(kStatsInstance, service_);
      engine_.reset();
      return;
    }
    if (random_.OneIn(2)) simulated::UnregisterService(kStatsInstance);
    time_.Suspend(std::chrono::seconds(random_.Below(3)));
    testkit::DestroyEngine(
        time_, [this] { engine_.reset(); }, [] { simulated::ReleaseServiceWaits(kStatsInstance); });
  }

  /// On the reporter thread. Each supplier answers with other numbers each time.
  testkit::Diagnostics AnswerOf(DiagnosticsItem /*asked*/) {
    const std::int32_t number = ++questions_;
    if (number % 3 == 0) called_->ReportFirmwareState(number, SensorVela::FirmwareState{2}, 0);
    testkit::Diagnostics answer;
    if (number % 2 == 0) answer.processor = {{number, 1, 2, 3}};
    answer.queues[0] = {{number, 1, 2, 3, 4, 5}};
    answer.ipc_error_rates.resize(static_cast<std::size_t>(number % 3), {number, 1, 2, 3});
    return answer;
  }

  const std::uint64_t seed_;
  Random random_;
  const simulated::ScopedLogSink no_log_{[](int, std::string_view, std::string_view) {}};
  simulated::VirtualTime time_;
  /// Written by the reporter thread.
  Texts received_;
  std::int32_t questions_ = 0;
  const std::shared_ptr<StatsService> service_ = ndk::SharedRefBase::make<StatsService>(
      [this](const SensorVela::VendorAtom& atom, Answer answer) {
        received_.push_back(ReportText(atom, answer));
        // A service that takes its time.
        for (auto yields = received_.size() % 7; yields > 5; --yields) std::this_thread::yield();
      });
  std::atomic<int> running_ = kThreads;
  std::unique_ptr<SensorVela> engine_;
  /// The engine, also while it is destroyed.
  SensorVela* called_ = nullptr;
};

class Reports : public tools::RunObserver {
 public:
  void OnAtom(Instant /*at*/, const tools::AtomFact& fact) override {
    if (fact.atom != nullptr && fact.answer) {
      texts.push_back(ReportText(*fact.atom, fact.answer.value()));
    }
  }
  Texts texts;
};

/// What the replay sends. Says so if it differs from its recording.
Texts ReplayOf(const std::string& recording, bool& is_exact) {
  const tools::Trace trace(recording, tools::OpenTrace(recording));
  Reports reports;
  tools::Replay replay({&reports}, false);
  replay.Run(trace.Events(false));
  is_exact = !replay.divergence();
  if (!is_exact) {
    std::printf("%s:%zu: %s\n", recording.c_str(), replay.divergence()->line,
                replay.divergence()->what.c_str());
  }
  return reports.texts;
}

/// False, and says where, if `replayed` is not the beginning of `received`, or not all of it.
bool IsTheSame(const Texts& replayed, const Texts& received, bool is_cut) {
  const auto [a, b] = std::ranges::mismatch(replayed, received);
  if (a == replayed.end() && (is_cut || b == received.end())) return true;
  std::printf("report %td of %zu:\n  host:   %s\n  replay: %s\n", b - received.begin() + 1,
              received.size(), b == received.end() ? "(nothing)" : b->c_str(),
              a == replayed.end() ? "(nothing)" : a->c_str());
  return false;
}

const std::string& Recording() {
  static const std::string path =
      std::filesystem::current_path() / ("random-host-" + std::to_string(getpid()) + ".jsonl");
  return path;
}

void Record(bool waits) {
  std::filesystem::remove(Recording());
  setenv("SENSORVELA_RECORDING", Recording().c_str(), 1);
  setenv("SENSORVELA_RECORDING_WAIT", waits ? "1" : "0", 1);
}

bool LivesTheSameAgain(std::uint64_t seed) {
  Record(true);
  const Texts received = Host(seed).Live();
  unsetenv("SENSORVELA_RECORDING");
  bool is_exact = false;
  const Texts replayed = ReplayOf(Recording(), is_exact);
  return IsTheSame(replayed, received, false) && is_exact;
}

/// A host on the real clocks that calls its engine until it is killed. It prints what its service
/// has received.
[[noreturn]] void LiveUntilKilled(std::uint64_t seed) {
  const simulated::ScopedLogSink no_log([](int, std::string_view, std::string_view) {});
  const auto service =
      ndk::SharedRefBase::make<StatsService>([](const SensorVela::VendorAtom& atom, Answer answer) {
        const std::string line = ReportText(atom, answer) + '\n';
        if (write(STDOUT_FILENO, line.data(), line.size()) < 0) std::abort();
      });
  simulated::RegisterService(kStatsInstance, service);
  SensorVela engine{std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>()};
  for (Random random(seed);;) {
    Call(engine, random);
    if (random.OneIn(50)) service->AnswerNext(1, Answer::kError);
    if (random.OneIn(500)) simulated::UnregisterService(kStatsInstance);
    if (random.OneIn(100)) simulated::RegisterService(kStatsInstance, service);
  }
}

/// Starts such a host and kills it when it has printed so many bytes. Returns its lines.
Texts KillAHost(std::uint64_t seed, std::size_t bytes) {
  std::array<int, 2> output = {};
  if (pipe2(output.data(), O_CLOEXEC) != 0) std::abort();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  std::array<std::string, 3> words = {"/proc/self/exe", "--live", std::to_string(seed)};
  const std::array<char*, 4> arguments = {words[0].data(), words[1].data(), words[2].data(),
                                          nullptr};
  pid_t host = 0;
  if (posix_spawn(&host, words[0].c_str(), &actions, nullptr, arguments.data(), environ) != 0) {
    std::abort();
  }
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);

  std::string printed;
  std::array<char, 65536> part;
  for (ssize_t size = 1; size > 0;) {
    size = read(output[0], part.data(), part.size());
    if (size > 0) printed.append(part.data(), static_cast<std::size_t>(size));
    if (printed.size() >= bytes) kill(host, SIGKILL);
  }
  close(output[0]);
  waitpid(host, nullptr, 0);
  Texts lines;
  std::istringstream stream(printed);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool ReplaysWhatTheServiceGot(std::uint64_t seed, std::size_t& replayed_in_all) {
  Record(false);
  Random random(seed);
  const Texts received = KillAHost(seed, 1 + static_cast<std::size_t>(random.Below(20'000'000)));
  unsetenv("SENSORVELA_RECORDING");
  bool is_exact = false;
  const Texts replayed = ReplayOf(Recording(), is_exact);
  replayed_in_all += replayed.size();
  return IsTheSame(replayed, received, true) && is_exact;
}

}  // namespace

int Run(int argc, char** argv) {
  std::uint64_t first = 1;
  std::uint64_t hosts = 0;
  std::uint64_t killed = 0;
  std::uint64_t live = 0;
  CLI::App app("Records random hosts, and compares what they sent with what the replays send.");
  app.add_option("--first", first, "the first seed")->capture_default_str();
  app.add_option("--hosts", hosts, "how many in virtual time");
  app.add_option("--killed", killed, "how many that are killed");
  app.add_option("--live", live, "live as the host with this seed until killed")->group("");
  CLI11_PARSE(app, argc, argv);
  if (live != 0) LiveUntilKilled(live);

  for (std::uint64_t seed = first; seed - first < hosts; ++seed) {
    if (LivesTheSameAgain(seed)) continue;
    std::printf("again: --first %ju --hosts 1; recording: %s\n", std::uintmax_t{seed},
                Recording().c_str());
    return 1;
  }
  std::size_t replayed = 0;
  for (std::uint64_t seed = first; seed - first < killed; ++seed) {
    if (ReplaysWhatTheServiceGot(seed, replayed)) continue;
    std::printf("again: --first %ju --killed 1; recording: %s\n", std::uintmax_t{seed},
                Recording().c_str());
    return 1;
  }
  std::filesystem::remove(Recording());
  std::printf("%ju hosts, none differs; %ju killed hosts, whose replays send %zu reports\n",
              std::uintmax_t{hosts}, std::uintmax_t{killed}, replayed);
  return 0;
}

}  // namespace sensorvela::testing

int main(int argc, char** argv) { return sensorvela::testing::Run(argc, argv); }
