#include "tests/schedules/platform.h"

#include <aidl/android/frameworks/stats/IStats.h>
#include <android/binder_manager.h>
#include <android/log.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "tests/schedules/memory.h"

using aidl::android::frameworks::stats::IStats;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using sensorvela::schedules::Platform;
using sensorvela::schedules::Step;
namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

struct AIBinder {};
struct AStatus {
  bool ok;
};

namespace {

constexpr std::int64_t kSixHoursNs = std::int64_t{6} * 3600 * 1'000'000'000;

AIBinder binder;
AStatus ok = {true};
AStatus failed = {false};

struct Line {
  std::string_view format;
  char letter;
};

constexpr std::array<Line, 6> kLines = {{
    {"IStats service is not registered.", 'N'},
    {"Failed to get IStats service.", 'F'},
    {"Failed to get IStats service. Atoms are dropped.", 'D'},
    {"Failed to report atom [id = %d].", 'X'},
    {"HAL Error [%d] has occurred [%u] times in current cycle, upload blocked due to cap [%u] met.",
     'C'},
    {"The recording %.*s has ended: %s.", 'E'},
}};

/// The atom's letter; a disable's is the number of samples. Each enable and each sample reads
/// elapsed realtime once, and none comes between an enable and its first sample: the latency is 1
/// ns.
char LetterOf(const VendorAtom& atom) {
  switch (atom.atomId) {
    case atoms::SensorHalErrorDetected::kAtomId:
      return 'e';
    case atoms::SensorFirstSampleReported::kAtomId:
      return atom.values[2] == std::int64_t{1} ? 'f' : 'g';
    case atoms::SensorProcessorDiagnosticsReported::kAtomId:
      return 'p';
    case atoms::SensorSystemQueueStressReported::kAtomId:
      return 'q';
    case atoms::HalSensorStateChanged::kAtomId: {
      const auto count = atom.values[4].get<VendorAtomValue::intValue>();
      return count < 0 ? '+' : static_cast<char>('0' + count);
    }
    default:
      return static_cast<char>(atom.atomId);
  }
}

class StatsService : public IStats {
 public:
  ndk::ScopedAStatus reportVendorAtom(const VendorAtom& atom) override {
    Platform::Get().ReportsAtom(&atom);
    const char letter = LetterOf(atom);
    if (letter == 'a' && Platform::Get().report_of_a_fails) return ndk::ScopedAStatus(&failed);
    Platform::Get().Record(letter);
    return ndk::ScopedAStatus(&ok);
  }
  ndk::SpAIBinder asBinder() override { return nullptr; }
  bool isRemote() override { return false; }
  ndk::ScopedAStatus getInterfaceVersion(std::int32_t*) override { return ndk::ScopedAStatus(); }
  ndk::ScopedAStatus getInterfaceHash(std::string*) override { return ndk::ScopedAStatus(); }
} stats_service;

}  // namespace

namespace sensorvela::schedules {

Platform& Platform::Get() {
  static Platform platform;
  return platform;
}

Platform::Platform() {
  environment.steps = {
      {{"six hours pass", {{{&now_ns, true}, {&record_, true}}}},
       [this] {
         now_ns += kSixHoursNs;
         record_ += 'T';
       }},
      {{"the service comes up", {{{&service, true}}}}, [this] { service = Service::kUp; }},
      {{"a spurious wake-up", {{{&spurious_wakes, true}}}, [this] { return waiting > 0; }},
       [this] { ++spurious_wakes; }}};
  environment.reset = [this] { Reset(); };
  environment.outcome = [this] {
    return record_ + (suppliers == 0 ? "" : ", and the supplier is left");
  };
}

void Platform::Reset() {
  for (EnvironmentStep& step : environment.steps) step.budget = 0;
  now_ns = 0;
  elapsed_ns_ = 0;
  declared = true;
  service = Service::kUp;
  report_of_a_fails = false;
  has_rules = true;
  elapses = true;
  waiting = 0;
  spurious_wakes = 0;
  suppliers = 0;
  record_.clear();
  threads_ = {};
}

std::int64_t Platform::ReadClock() {
  // Without a change to come, every moment to read it is the same.
  if (six_hours().budget > 0) Step({.name = "clock", .uses = {{{&now_ns, false}}}});
  return now_ns;
}

std::int64_t Platform::ReadElapsedRealtime() {
  if (!elapses) return elapsed_ns_;
  Step({.name = "elapsed realtime", .uses = {{{&elapsed_ns_, true}}}});
  return ++elapsed_ns_;
}

void Platform::Record(char letter) {
  Step({.name = "record", .uses = {{{&record_, true}}}});
  const CheckerMemory checker_memory;
  record_ += letter;
}

void Platform::TakesLock() {
  if (!has_rules) return;
  Thread& thread = ThisThread();
  if (thread.has_service) Fail("a lock is taken before the service is released");
  if (!std::all_of(thread.reported.begin(), thread.reported.end(), IsFreed)) {
    Fail("a lock is taken before the batch is discarded");
  }
  thread.reported.clear();
  ++thread.locks;
}

void Platform::DropsLock() {
  if (has_rules) --ThisThread().locks;
}

void Platform::CallsOut() {
  if (!has_rules || ThisThread().locks == 0) return;
  Fail("a call of the platform or the supplier with a lock held");
}

void Platform::TakesService() { ThisThread().has_service = true; }

void Platform::ReportsAtom(const void* atom) {
  if (!has_rules) return;
  const CheckerMemory checker_memory;
  ThisThread().reported.push_back(atom);
}

void Platform::ReleasesService() {
  Thread& thread = ThisThread();
  if (std::any_of(thread.reported.begin(), thread.reported.end(), IsFreed)) {
    Fail("the batch is discarded before the service is released");
  }
  thread.has_service = false;
}

}  // namespace sensorvela::schedules

std::int64_t android::elapsedRealtimeNano() { return Platform::Get().ReadElapsedRealtime(); }

// Information is not recorded.
int __android_log_print(int /*prio*/, const char* /*tag*/, const char* fmt, ...) {
  const auto* const line = std::find_if(kLines.begin(), kLines.end(),
                                        [&](const Line& known) { return known.format == fmt; });
  if (line == kLines.end()) return 1;
  char letter = line->letter;
  if (letter == 'C') {
    va_list arguments;
    va_start(arguments, fmt);
    va_arg(arguments, int);  // The enumerator.
    if (va_arg(arguments, unsigned) > 11) letter = 'c';
    va_end(arguments);
  }
  Platform::Get().Record(letter);
  return 1;
}

bool AServiceManager_isDeclared(const char*) {
  Platform::Get().CallsOut();
  Step({.name = "is declared"});
  return Platform::Get().declared;
}

AIBinder* AServiceManager_waitForService(const char*) {
  Platform& platform = Platform::Get();
  platform.CallsOut();
  Step({.name = "look up", .uses = {{{&platform.service, false}}}, .ready = [&platform] {
          return platform.service != Platform::Service::kAbsent;
        }});
  return platform.service == Platform::Service::kUp ? &binder : nullptr;
}

void AIBinder_incStrong(AIBinder*) {}
void AIBinder_decStrong(AIBinder*) {}
bool AStatus_isOk(const AStatus* status) { return status->ok; }
void AStatus_delete(AStatus*) {}

binder_status_t ndk::ICInterface::dump(int, const char**, std::uint32_t) { return STATUS_OK; }

namespace aidl::android::frameworks::stats {

const char* IStats::descriptor = "android.frameworks.stats.IStats";
IStats::IStats() = default;
IStats::~IStats() = default;

// Each reference is counted for itself: the service is never destroyed.
std::shared_ptr<IStats> IStats::fromBinder(const ndk::SpAIBinder& binder) {
  if (binder.get() == nullptr) return nullptr;
  Platform::Get().TakesService();
  const sensorvela::schedules::CheckerMemory checker_memory;
  return {&stats_service, [](IStats*) { Platform::Get().ReleasesService(); }};
}

}  // namespace aidl::android::frameworks::stats
