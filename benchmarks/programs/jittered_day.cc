// A host whose sensors deliver twelve million samples with the jitter of real ones, in virtual
// time. To be recorded: the time that it takes with the recorder and without, the size of the
// recording, and the time of its replay tell what a recording costs.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>

#include <sensorvela/engine/sensor_vela.h>
#include <sensorvela/platform/simulated/service_manager.h>
#include <sensorvela/platform/simulated/virtual_time.h>

#include "benchmarks/engine.h"

namespace {

constexpr int kSamples = 12'000'000;
// The timer's jitter and the spread of the path's latency. They are assumed, not measured.
constexpr double kJitterNs = 60'000;
constexpr double kLatencySpreadNs = 300'000;
constexpr std::int64_t kLeastLatencyNs = 3'000'000;

struct Sensor {
  SensorVela::SensorId id;
  std::int64_t period_ns;
  /// When the next sample is due, and when it comes.
  std::int64_t due_ns = 0;
  std::int64_t arrival_ns = 0;
};

void DeliverSamples(SensorVela& engine, sensorvela::simulated::VirtualTime& time) {
  std::array<Sensor, 6> sensors = {{{{16, 1}, 20'000'000},
                                    {{17, 1}, 20'000'000},
                                    {{18, 1}, 66'000'000},
                                    {{19, 1}, 100'000'000},
                                    {{20, 1}, 110'000'000},
                                    {{21, 1}, 200'000'000}}};
  std::mt19937_64 random(1);
  std::normal_distribution<double> jitter(0, kJitterNs);
  std::normal_distribution<double> latency(0, kLatencySpreadNs);
  for (const Sensor& sensor : sensors) engine.ReportHalSensorEnabled(sensor.id, sensor.period_ns);
  for (int i = 0; i < kSamples; ++i) {
    Sensor& next = *std::ranges::min_element(sensors, {}, &Sensor::arrival_ns);
    time.RunTo(std::chrono::nanoseconds(next.arrival_ns));
    const auto latency_ns = kLeastLatencyNs + std::llround(std::abs(latency(random)));
    engine.LogSensorLatency(next.id, time.Now().count() - latency_ns);
    next.due_ns += next.period_ns;
    next.arrival_ns = next.due_ns + std::llround(jitter(random));
  }
  for (const Sensor& sensor : sensors) engine.ReportHalSensorDisabled(sensor.id);
}

}  // namespace

int main() {
  sensorvela::simulated::VirtualTime time;
  {
    const auto engine = sensorvela::benchmarks::StartEngine();
    DeliverSamples(*engine, time);
    time.WaitUntilAtRest();
  }
  sensorvela::simulated::ResetServices();
}
