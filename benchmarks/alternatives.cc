// One HAL error, reported with this library and in other ways that a host could choose.
#include <spdlog/async.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <cstdint>

#include <sensorvela/atoms/sensor_event_atoms.h>

#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr SensorVela::SensorId kSensor = {0x10, 1};
constexpr int kError = -22;

/// Stays below the cap: after every ten errors, the failing call changes.
void Engine(benchmark::State& state) {
  const auto engine = StartEngine();
  std::int32_t errors = 0;
  for (auto _ : state) {
    engine->LogSensorHalError(kSensor, static_cast<SensorVela::HalCall>(errors++ / 10), kError);
  }
}

/// A full queue drops its oldest line, so that the caller never waits, as with the engine.
void AsynchronousLogger(benchmark::State& state) {
  spdlog::init_thread_pool(8192, 1);
  const auto logger = spdlog::create_async_nb<spdlog::sinks::null_sink_mt>("bench");
  std::int32_t errors = 0;
  for (auto _ : state) {
    logger->info("Reporting HAL call [{}] error [{}] on sensor [{:#010x}].", errors++ / 10, kError,
                 kSensor.high);
  }
  spdlog::shutdown();
}

void DirectCall(benchmark::State& state) {
  using android::hardware::halvard::orrin::vendor::OrrinAtoms::SensorHalErrorDetected;
  NoOpService service;
  IStats* stats = &service;
  benchmark::DoNotOptimize(stats);
  std::int32_t errors = 0;
  for (auto _ : state) {
    const auto status = stats->reportVendorAtom(createVendorAtom(
        SensorHalErrorDetected{.sensor_id_high = static_cast<std::int32_t>(kSensor.high),
                               .sensor_id_low = kSensor.low,
                               .hal_call = static_cast<SensorVela::HalCall>(errors++ / 10),
                               .error_code = kError}));
    benchmark::DoNotOptimize(status.isOk());
  }
}

}  // namespace

void AddAlternatives() {
  constexpr char kTable[] = "One HAL error, on the caller's thread";
  Add(kTable, "LogSensorHalError", Engine);
  Add(kTable, "spdlog, asynchronous, null sink", AsynchronousLogger);
  Add(kTable, "a direct call into a service in this process", DirectCall);
}

}  // namespace sensorvela::benchmarks
