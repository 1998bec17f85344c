// sensorvela-footprint: prints how much memory an engine, a sensor and a queued atom take, as
// tables for scripts/print-tables.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <sensorvela/atoms/diagnostics_atoms.h>
#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/log_sink.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "benchmarks/engine.h"

namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using sensorvela::benchmarks::StartEngine;

thread_local std::size_t allocated_bytes = 0;

}  // namespace

// Counts what this program and the libraries allocate.
void* operator new(std::size_t sz) {
  void* block = std::malloc(sz);  // NOLINT(cppcoreguidelines-no-malloc)
  if (block == nullptr) std::abort();
  allocated_bytes += sz;
  return block;
}
void operator delete(void* p) noexcept {
  std::free(p);  // NOLINT(cppcoreguidelines-no-malloc)
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

namespace {

void Print(const char* what, std::size_t bytes) { std::printf("%s\t%zu\n", what, bytes); }

template <typename Record>
void PrintAtom(const char* what, const Record& record) {
  const std::size_t before = allocated_bytes;
  const VendorAtom atom = createVendorAtom(record);
  Print(what, sizeof(atom) + allocated_bytes - before);
}

/// What one more sensor allocates, measured with a table like the status table.
std::size_t TableEntryBytes() {
  std::unordered_map<std::uint64_t, std::array<std::int64_t, 7>> table;
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

void PrintResident() {
  sensorvela::simulated::VirtualTime time;
  std::vector<std::unique_ptr<SensorVela>> engines;
  const auto start = [&](std::size_t count) {
    const std::size_t before = OwnBytes();
    for (std::size_t i = 0; i < count; ++i) engines.push_back(StartEngine());
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
  PrintAtom("SensorHalErrorDetected", atoms::SensorHalErrorDetected{});
  PrintAtom("SensorRuntimeErrorDetected", atoms::SensorRuntimeErrorDetected{});
  PrintAtom("HalSensorStateChanged, enabled", atoms::HalSensorStateChanged{});
  PrintAtom("HalSensorStateChanged, disabled",
            atoms::HalSensorStateChanged{.latency_histogram = {0, 0, 0, 0, 0}});
  PrintAtom("SensorFirstSampleReported", atoms::SensorFirstSampleReported{});
  PrintAtom("SensorHalLatencyRecorded", atoms::SensorHalLatencyRecorded{});
  PrintAtom("SensorFirmwareStateChanged", atoms::SensorFirmwareStateChanged{});
  PrintAtom("ProxStatusReported", atoms::ProxStatusReported{});
  PrintAtom("AADProxStatsReported", atoms::AADProxStatsReported{});
  std::printf("### Resident memory\n\tbytes\n");
  PrintResident();
}
