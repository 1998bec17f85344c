// A HAL error past its cap: it is counted and logged, but not queued.
#include <android/log.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "benchmarks/comparison.h"
#include "benchmarks/engine.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

constexpr int kCalls = 1000;

Slice Operation() {
  const std::shared_ptr<SensorVela> engine = StartEngine();
  const auto fail = [=] { engine->LogSensorHalError({0x10, 1}, SensorVela::HalCall{3}, -22); };
  for (int i = 0; i < 10; ++i) fail();
  return [=] { return MeanNs(kCalls, fail); };
}

struct Counts {
  std::mutex mutex;
  std::unordered_map<std::uint64_t, std::uint32_t> counts;
};

[[gnu::noinline]] void BaselineFail(Counts& counts, std::uint64_t key) {
  const std::lock_guard lock(counts.mutex);
  const std::uint32_t count = ++counts.counts.find(key)->second;
  if (count <= 10) return;
  __android_log_print(ANDROID_LOG_ERROR, "bench",
                      "HAL Error [%d] has occurred [%u] times in current cycle, upload blocked due "
                      "to cap [%u] met.",
                      static_cast<std::int32_t>(key), count, 10U);
}

Slice Baseline() {
  const auto counts = std::make_shared<Counts>();
  counts->counts[3] = 10;
  return [=] { return MeanNs(kCalls, [&] { BaselineFail(*counts, 3); }); };
}

}  // namespace

void AddErrorCap() {
  Add({.table = "An error past the cap (LogSensorHalError)",
       .name = "log messages discarded",
       .operation = Operation,
       .baseline = Baseline,
       .goal = 1.15});
}

}  // namespace sensorvela::benchmarks
