// sensorvela-footprint: what an engine, a sensor and a queued atom take of the memory.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string_view>
#include <vector>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "engine/sensor_vela.h"
#include "platform/host/log_sink.h"
#include "platform/host/virtual_time.h"

namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

void Print(const char* what, std::size_t bytes) {
  std::printf("  %-52s %7zu bytes\n", what, bytes);
}

void PrintAtom(const char* what, const VendorAtom& atom) {
  std::size_t bytes = sizeof(atom) + atom.values.capacity() * sizeof(VendorAtomValue);
  for (const VendorAtomValue& value : atom.values) {
    if (value.getTag() != VendorAtomValue::repeatedIntValue) continue;
    const auto& list = value.get<VendorAtomValue::repeatedIntValue>();
    if (list) bytes += list->capacity() * sizeof(std::int32_t);
  }
  Print(what, bytes);
}

std::size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t pages = 0;
  statm >> pages >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The mean of some: a single one may fit into what the process has already.
std::size_t IdleEngineBytes() {
  constexpr std::size_t kEngines = 32;
  sensorvela::host::VirtualTime time;
  std::vector<std::unique_ptr<SensorVela>> engines;
  const std::size_t before = ResidentBytes();
  for (std::size_t i = 0; i < kEngines; ++i) {
    engines.push_back(std::make_unique<SensorVela>(
        std::unique_ptr<SensorVela::SystemDiagnosticsSupplier>(nullptr)));
  }
  time.WaitUntilAtRest();
  return (ResidentBytes() - before) / kEngines;
}

}  // namespace

int main() {
  const sensorvela::host::ScopedLogSink to_nowhere([](int, std::string_view, std::string_view) {});
  std::printf("Of the memory, without the heap's own overhead:\n");
  Print("the engine", sizeof(SensorVela));
  // The map's node: the next one, the hash, the key and the status; and its place in the table.
  Print("a sensor in the status table", 3 * sizeof(void*) + sizeof(std::uint64_t) + 56);
  Print("an atom's own fields", sizeof(VendorAtom));
  Print("one value", sizeof(VendorAtomValue));
  std::printf("A queued atom with its values:\n");
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
  std::printf("Resident:\n");
  Print("an idle engine, its thread's stack included", IdleEngineBytes());
}
