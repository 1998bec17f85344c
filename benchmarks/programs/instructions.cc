// sensorvela-instructions: runs each main operation a thousand times and tells callgrind, under
// which the check `instructions` runs it, where each begins and ends.
#include <utils/SystemClock.h>
#include <valgrind/callgrind.h>

#include <cstdint>
#include <string_view>

#include <sensorvela/atoms/memory_serviceability_histograms.h>
#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/histogram/stats_histogram.h>
#include <sensorvela/platform/simulated/log_sink.h>

#include "benchmarks/baseline_queue.h"
#include "benchmarks/engine.h"

namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using sensorvela::benchmarks::BaselineAtom;

constexpr int kCalls = 1000;
constexpr SensorVela::SensorId kSensor = {0x10, 1};

/// The calls before are not counted: they fill tables, and have the linker look functions up.
template <typename Call>
void Count(const char* operation, const Call& call) {
  for (int i = 0; i < kCalls; ++i) call();
  CALLGRIND_ZERO_STATS;
  for (int i = 0; i < kCalls; ++i) call();
  CALLGRIND_DUMP_STATS_AT(operation);
}

}  // namespace

int main() {
  const sensorvela::simulated::ScopedLogSink to_nowhere(
      [](int, std::string_view, std::string_view) {});
  // Its reporter thread is blocked, so that only the caller's instructions are counted.
  sensorvela::benchmarks::BlockedEngine engine;
  const std::int64_t timestamp_ns = android::elapsedRealtimeNano();
  Count("sample", [&] { engine->LogSensorLatency(kSensor, timestamp_ns); });
  Count("event", [&] { engine->ReportHalLatency(SensorVela::HalOperation{4}, kSensor, 1); });
  Count("disable", [&] { engine->ReportHalSensorDisabled(kSensor); });
  Count("copy", [&, atom = BaselineAtom(20)] { engine->ReportVendorAtomAsync(atom); });
  Count("builder", [] { createVendorAtom(atoms::SensorHalLatencyRecorded{}); });
  const auto histogram =
      atoms::create_sensor_memory_serviceability_stats_reported__bucket_duration_ms_histogram();
  Count("addValue", [&] { histogram->addValue(47.5F); });
}
