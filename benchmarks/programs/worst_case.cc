// sensorvela-worst-case [CALLS]: prints how long a real-time thread's calls take at worst, as
// tables for scripts/print-tables.
//
// All threads share one processor. The real-time thread calls the engine every 0.1 ms; threads of
// lower priority, which use the engine too, are in its way. Each scenario runs with ordinary locks
// and with locks that inherit priority, alone and beside a hog: a real-time thread that does not
// use the engine and preempts all but the caller.
//
// Exits with 77 if the system does not let this process use real-time priorities.
#include <android/log.h>
#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/testkit/diagnostics.h>
#include <sensorvela/testkit/stats_service.h>

#include "benchmarks/engine.h"

using namespace std::chrono_literals;

namespace {

namespace simulated = sensorvela::simulated;
namespace testkit = sensorvela::testkit;
using std::chrono::nanoseconds;

constexpr int kExitNotPermitted = 77;

constexpr int kCallerPriority = 30;
constexpr int kHogPriority = 20;
constexpr int kSecondSamplerPriority = 10;

constexpr nanoseconds kCallEvery = 100us;
constexpr nanoseconds kHogRuns = 5ms;
constexpr nanoseconds kHogSleeps = 3ms;
constexpr nanoseconds kSlowLogLine = 200us;

constexpr int kBurst = 2'000;
constexpr int kSecondSamplerSamples = 20'000;
constexpr std::int64_t kMostQueued = 4'000;
constexpr SensorVela::SensorId kSensor = {0x10, 1};

bool locks_are_ordinary = false;
thread_local bool log_is_slow = false;

nanoseconds Now() { return std::chrono::steady_clock::now().time_since_epoch(); }

void Spin(nanoseconds duration) {
  for (const nanoseconds end = Now() + duration; Now() < end;) {
  }
}

/// False if the system refuses.
bool SetRealTimePriority(int priority) {
  const sched_param parameters = {.sched_priority = priority};
  return pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameters) == 0;
}

/// A thread that repeats `body` from its construction to its destruction.
class Repeating {
 public:
  /// With the priority 0, the thread has no real-time priority.
  Repeating(int priority, std::function<void()> body)
      : thread_([this, priority, body = std::move(body)] {
          if (priority > 0) SetRealTimePriority(priority);
          while (!stop_) body();
        }) {}
  ~Repeating() {
    stop_ = true;
    thread_.join();
  }
  Repeating(const Repeating&) = delete;
  Repeating& operator=(const Repeating&) = delete;

 private:
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

testkit::Diagnostics FullDiagnostics() {
  return {
      .processor = SensorVela::ProcessorDiag{},
      .queues = {SensorVela::QueueStress{}, SensorVela::QueueStress{}, SensorVela::QueueStress{}},
      .ipc_error_rates = std::vector<SensorVela::IpcErrorRate>(4),
      .memory = std::vector<SensorVela::MemoryPressure>(4),
      .sensor_usages = std::vector<SensorVela::SensorUsage>(20),
      .gating_contexts = std::vector<SensorVela::GatingContext>(4),
      .dram_exception = SensorVela::DramException{},
      .prox_stats = SensorVela::AadProxStats{}};
}

}  // namespace

/// Uploads diagnostics without a wait of six hours.
class SensorVelaTestPeer {
 public:
  static void Upload(SensorVela& engine) { engine.UploadDiagnostics(); }
};

// These replace functions of the C library and of the simulated platform, also for the libraries.

int pthread_mutexattr_setprotocol(pthread_mutexattr_t* attr, int protocol) noexcept {
  using Function = int (*)(pthread_mutexattr_t*, int);
  static const auto real =
      reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutexattr_setprotocol"));
  return locks_are_ordinary ? ENOTSUP : real(attr, protocol);
}

int __android_log_print(int /*prio*/, const char* /*tag*/, const char* /*fmt*/, ...) {
  if (log_is_slow) Spin(kSlowLogLine);
  return 1;
}

namespace {

struct Scenario {
  const char* name;
  /// What the real-time thread does. The first call is not measured.
  std::function<void(SensorVela&)> call;
  /// What another thread of this priority repeats, none if null. Returns how many atoms it queued.
  int priority;
  std::function<int(SensorVela&)> beside;
};

void Sample(SensorVela& engine) {
  engine.LogSensorLatency(kSensor, android::elapsedRealtimeNano());
}
void Event(SensorVela& engine) { engine.ReportHalLatency({}, kSensor, 1); }
void CappedError(SensorVela& engine) { engine.LogSensorHalError(kSensor, {}, 1); }

const Scenario kScenarios[] = {
    {"no call, alone: the machine's own noise", [](SensorVela&) {}, 0, nullptr},
    {"a sample, alone", Sample, 0, nullptr},
    {"a sample, beside enables and disables", Sample, 0,
     [](SensorVela& engine) {
       engine.ReportHalSensorEnabled(kSensor, 1);
       engine.ReportHalSensorDisabled(kSensor);
       return 2;
     }},
    {"a sample, beside a second real-time sampler", Sample, kSecondSamplerPriority,
     [](SensorVela& engine) {
       for (int i = 0; i < kSecondSamplerSamples; ++i) Sample(engine);
       std::this_thread::sleep_for(2ms);
       return 0;
     }},
    {"an event, beside bursts of 2,000 and their drains", Event, 0,
     [](SensorVela& engine) {
       for (int i = 0; i < kBurst; ++i) Event(engine);
       return kBurst;
     }},
    {"an event, beside uploads", Event, 0,
     [](SensorVela& engine) {
       SensorVelaTestPeer::Upload(engine);
       return 38;
     }},
    {"an error past its cap, beside others whose log line takes 0.2 ms", CappedError, 0,
     [](SensorVela& engine) {
       log_is_slow = true;
       CappedError(engine);
       return 0;
     }},
};

/// The times of the calls, in ascending order.
std::vector<nanoseconds> TimesOf(const Scenario& scenario, std::size_t calls, bool with_hog) {
  const auto service = ndk::SharedRefBase::make<sensorvela::benchmarks::CountingService>();
  simulated::RegisterService(testkit::kStatsInstance, service);
  std::vector<nanoseconds> times(calls);
  {
    const auto engine =
        testkit::MakeEngine(testkit::SupplierKind::kSecondGeneration,
                            [](testkit::DiagnosticsItem) { return FullDiagnostics(); });
    engine->ReportHalSensorEnabled(kSensor, 1);
    for (int i = 0; i < 20; ++i) CappedError(*engine);

    std::unique_ptr<Repeating> other;
    std::int64_t queued = 0;
    if (scenario.beside != nullptr) {
      other = std::make_unique<Repeating>(scenario.priority, [&] {
        queued += scenario.beside(*engine);
        while (queued - service->reports > kMostQueued) std::this_thread::sleep_for(1ms);
      });
    }
    std::unique_ptr<Repeating> hog;
    if (with_hog) {
      hog = std::make_unique<Repeating>(kHogPriority, [] {
        Spin(kHogRuns);
        std::this_thread::sleep_for(kHogSleeps);
      });
    }
    std::thread([&] {
      SetRealTimePriority(kCallerPriority);
      scenario.call(*engine);
      for (nanoseconds& time : times) {
        std::this_thread::sleep_for(kCallEvery);
        const nanoseconds start = Now();
        scenario.call(*engine);
        time = Now() - start;
      }
    }).join();
  }
  simulated::ResetServices();
  std::sort(times.begin(), times.end());
  return times;
}

void PrintTimes(const std::vector<nanoseconds>& times) {
  constexpr std::array<std::size_t, 5> kPerTenThousand = {5'000, 9'900, 9'990, 9'999, 10'000};
  for (const std::size_t rank : kPerTenThousand) {
    const nanoseconds time = times[(times.size() - 1) * rank / 10'000];
    std::printf("\t%.1f", static_cast<double>(time.count()) / 1'000);
  }
}

void PrintTable(const char* title, std::size_t calls, bool with_hog) {
  std::printf("### %s\n", title);
  for (const char* locks : {"ordinary locks", "inheriting locks"}) {
    for (const char* rank : {"median", "99 %", "99.9 %", "99.99 %", "greatest"}) {
      std::printf("\t%s: %s", locks, rank);
    }
  }
  std::printf("\n");
  for (const Scenario& scenario : kScenarios) {
    std::printf("%s", scenario.name);
    for (const bool ordinary : {true, false}) {
      locks_are_ordinary = ordinary;
      PrintTimes(TimesOf(scenario, calls, with_hog));
    }
    std::printf("\n");
    std::fflush(stdout);
  }
}

void RunOnOneProcessor() {
  cpu_set_t allowed;
  sched_getaffinity(0, sizeof(allowed), &allowed);
  std::size_t last = CPU_SETSIZE - 1;
  while (!CPU_ISSET(last, &allowed)) --last;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(last, &one);
  sched_setaffinity(0, sizeof(one), &one);
}

bool RealTimeIsPermitted() {
  bool permitted = false;
  std::thread([&] { permitted = SetRealTimePriority(kCallerPriority); }).join();
  return permitted;
}

}  // namespace

int main(int argc, char** argv) {
  long calls = 100'000;
  char* end = nullptr;
  if (argc > 1) calls = std::strtol(argv[1], &end, 10);
  if (argc > 2 || calls < 1 || (end != nullptr && *end != '\0')) {
    std::fprintf(stderr, "usage: sensorvela-worst-case [CALLS]\n");
    return 2;
  }
  if (!RealTimeIsPermitted()) {
    std::fprintf(stderr,
                 "sensorvela-worst-case: the system does not let this process use SCHED_FIFO with "
                 "priority %d: run it as root, or raise RLIMIT_RTPRIO (ulimit -r)\n",
                 kCallerPriority);
    return kExitNotPermitted;
  }
  RunOnOneProcessor();
  PrintTable("A call of a real-time thread, us", static_cast<std::size_t>(calls), false);
  std::printf("\n");
  PrintTable("A call of a real-time thread beside a hog, us", static_cast<std::size_t>(calls),
             true);
}
