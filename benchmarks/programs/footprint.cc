// sensorvela-footprint: prints how much memory an engine, a sensor and a queued atom take, as
// tables for scripts/print-tables.
#include <aidl/android/frameworks/stats/BnStats.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sensorvela/atoms/diagnostics_atoms.h>
#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>

namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

void Print(const char* what, std::size_t bytes) { std::printf("%s\t%zu\n", what, bytes); }

void PrintAtom(const char* what, const VendorAtom& atom) {
  std::size_t bytes = sizeof(atom) + atom.values.capacity() * sizeof(VendorAtomValue);
  for (const VendorAtomValue& value : atom.values) {
    if (value.getTag() != VendorAtomValue::repeatedIntValue) continue;
    const auto& list = value.get<VendorAtomValue::repeatedIntValue>();
    if (list) bytes += list->capacity() * sizeof(std::int32_t);
  }
  Print(what, bytes);
}

std::size_t allocated_bytes = 0;

template <typename T>
struct CountingAllocator : std::allocator<T> {
  template <typename U>
  struct rebind {  // NOLINT(readability-identifier-naming): the standard's name.
    using other = CountingAllocator<U>;
  };
  CountingAllocator() = default;
  template <typename U>
  explicit CountingAllocator(const CountingAllocator<U>&) {}

  T* allocate(std::size_t count) {
    allocated_bytes += count * sizeof(T);  // NOLINT(bugprone-sizeof-expression)
    return std::allocator<T>::allocate(count);
  }
};

/// What one more sensor allocates, measured with a table like the status table.
std::size_t TableEntryBytes() {
  using Status = std::array<std::int64_t, 7>;
  std::unordered_map<std::uint64_t, Status, std::hash<std::uint64_t>, std::equal_to<>,
                     CountingAllocator<std::pair<const std::uint64_t, Status>>>
      table;
  table.reserve(2);
  table[1] = {};
  const std::size_t before = allocated_bytes;
  table[2] = {};
  return allocated_bytes - before;
}

/// The process's own resident memory: heap and stacks.
std::size_t OwnBytes() {
  std::ifstream totals("/proc/self/smaps_rollup");
  std::size_t kib = 0;
  for (std::string key; totals >> key;) {
    if (key == "Anonymous:") totals >> kib;
  }
  return kib * 1024;
}

/// The resident memory of the library's file, with what the system reads ahead.
std::size_t LibraryBytes() {
  std::ifstream maps("/proc/self/smaps");
  std::size_t kib = 0;
  bool of_library = false;
  for (std::string line; std::getline(maps, line);) {
    const bool is_header = line.find('-') < line.find(' ');
    if (is_header) of_library = line.find("/libsensorvela.so") != std::string::npos;
    if (of_library && line.starts_with("Rss:")) kib += std::stoul(line.substr(4));
  }
  return kib * 1024;
}

class IdleStats : public aidl::android::frameworks::stats::BnStats {
  ndk::ScopedAStatus reportVendorAtom(
      const aidl::android::frameworks::stats::VendorAtom& /*atom*/) override {
    return ndk::ScopedAStatus::ok();
  }
};

void PrintResident() {
  sensorvela::simulated::VirtualTime time;
  const char* const instance = "android.frameworks.stats.IStats/default";
  sensorvela::simulated::DeclareService(instance);
  sensorvela::simulated::RegisterService(instance, ndk::SharedRefBase::make<IdleStats>());
  std::vector<std::unique_ptr<SensorVela>> engines;
  const auto start = [&](std::size_t count) {
    const std::size_t before = OwnBytes();
    for (std::size_t i = 0; i < count; ++i) {
      engines.push_back(std::make_unique<SensorVela>(
          std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>(nullptr)));
    }
    time.WaitUntilAtRest();
    return (OwnBytes() - before) / count;
  };
  OwnBytes();  // Allocates what every reading needs, so that it is not counted.
  Print("the first idle engine: the heap and the thread's stack", start(1));
  Print("each of 32 more: the heap and the thread's stack", start(32));
  Print("pages of libsensorvela.so", LibraryBytes());
}

}  // namespace

int main() {
  const sensorvela::simulated::ScopedLogSink to_nowhere(
      [](int, std::string_view, std::string_view) {});
  std::printf("### Memory, without the heap's own overhead\n\tbytes\n");
  Print("the engine", sizeof(SensorVela));
  Print("a sensor in the status table, and its bucket", TableEntryBytes() + sizeof(void*));
  Print("an atom's own fields", sizeof(VendorAtom));
  Print("one value", sizeof(VendorAtomValue));
  std::printf("### A queued atom with its values\n\tbytes\n");
  PrintAtom("SensorHalErrorDetected", createVendorAtom(atoms::SensorHalErrorDetected{}));
  PrintAtom("SensorRuntimeErrorDetected", createVendorAtom(atoms::SensorRuntimeErrorDetected{}));
  PrintAtom("HalSensorStateChanged, enabled", createVendorAtom(atoms::HalSensorStateChanged{}));
  PrintAtom("HalSensorStateChanged, disabled",
            createVendorAtom(atoms::HalSensorStateChanged{.latency_histogram = {0, 0, 0, 0, 0}}));
  PrintAtom("SensorFirstSampleReported", createVendorAtom(atoms::SensorFirstSampleReported{}));
  PrintAtom("SensorHalLatencyRecorded", createVendorAtom(atoms::SensorHalLatencyRecorded{}));
  PrintAtom("SensorFirmwareStateChanged", createVendorAtom(atoms::SensorFirmwareStateChanged{}));
  PrintAtom("ProxStatusReported", createVendorAtom(atoms::ProxStatusReported{}));
  PrintAtom("AADProxStatsReported", createVendorAtom(atoms::AADProxStatsReported{}));
  std::printf("### Resident memory\n\tbytes\n");
  PrintResident();
}
