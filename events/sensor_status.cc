// Each sensor's status since its last enable: how many samples it delivered, with which latencies,
// and how many of them late.
#include <utils/SystemClock.h>

#include <cstdint>

#include "atoms/moved_records.h"
#include "atoms/sensor_event_atoms.h"
#include "engine/counting_rules.h"
#include "engine/sensor_vela.h"
#include "engine/wrapping_arithmetic.h"

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using sensorvela::WrappingAdd;
using sensorvela::WrappingSubtract;
using sensorvela::platform::MutexLock;

namespace {

constexpr std::int32_t kSensorStateDisabled = 1;
constexpr std::int32_t kSensorStateEnabled = 2;

/// Counters wrap: a count is exact up to 2^32 - 1 samples.
void Increment(std::uint32_t& counter) { counter = WrappingAdd(counter, std::uint32_t{1}); }

std::uint64_t StatusKey(SensorVela::SensorId sensor) {
  return std::uint64_t{sensor.high} << 32 | static_cast<std::uint32_t>(sensor.low);
}

}  // namespace

void SensorVela::ReportHalSensorEnabled(SensorId sensor, long long sampling_period_ns) {
  Enqueue(MoveIntoVendorAtom(atoms::HalSensorStateChanged{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .state = kSensorStateEnabled,
      .sampling_period_ns = sampling_period_ns,
      .sample_count = -1,
      .late_sample_count = -1,
      .latency_histogram = {},
  }));

  const MutexLock lock(status_mutex_);
  PerSensorStatus& status = StatusOf(sensor);
  const std::int64_t now_ns = android::elapsedRealtimeNano();
  status = {};
  status.enable_time_ns = now_ns;
  status.last_sample_time_ns = now_ns;
  status.gap_threshold_ns = sensorvela::GapThresholdNs(sampling_period_ns);
}

void SensorVela::ReportHalSensorDisabled(SensorId sensor) {
  const MutexLock lock(status_mutex_);
  const PerSensorStatus& status = StatusOf(sensor);
  Enqueue(MoveIntoVendorAtom(atoms::HalSensorStateChanged{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .state = kSensorStateDisabled,
      .sampling_period_ns = -1,
      .sample_count = static_cast<std::int32_t>(status.sample_count),
      .late_sample_count = static_cast<std::int32_t>(status.late_sample_count),
      .latency_histogram = {status.latency_buckets.begin(), status.latency_buckets.end()},
  }));
}

void SensorVela::LogSensorLatency(SensorId sensor, long long timestamp_ns) {
  static_assert(PerSensorStatus{}.latency_buckets.size() == sensorvela::kLatencyBands);
  const MutexLock lock(status_mutex_);
  // Inlined here, because nearly all samples are of a sensor that has a status.
  const auto known = sensor_status_.find(StatusKey(sensor));
  PerSensorStatus& status = known != sensor_status_.end() ? known->second : StatusOf(sensor);
  const std::int64_t now_ns = android::elapsedRealtimeNano();
  const std::int64_t latency_ns = WrappingSubtract<std::int64_t>(now_ns, timestamp_ns);
  Increment(status.latency_buckets[sensorvela::LatencyBand(latency_ns)]);

  const bool is_first = status.sample_count == 0;
  Increment(status.sample_count);
  if (sensorvela::IsLate(timestamp_ns, status.last_sample_time_ns, status.gap_threshold_ns)) {
    Increment(status.late_sample_count);
  }
  if (is_first) {
    ReportFirstSample(sensor, WrappingSubtract(now_ns, status.enable_time_ns));
  }
  status.last_sample_time_ns = timestamp_ns;
}

// Not inlined into the sample path, which seldom calls it.
[[gnu::noinline]] void SensorVela::ReportFirstSample(SensorId sensor, long long latency_ns) {
  Enqueue(createVendorAtom(atoms::SensorFirstSampleReported{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .first_sample_latency_ns = latency_ns,
  }));
}

[[gnu::noinline]] SensorVela::PerSensorStatus& SensorVela::StatusOf(SensorId sensor) {
  return sensor_status_.try_emplace(StatusKey(sensor)).first->second;
}

void SensorVela::EnsureSensorEntryInStatus(SensorId sensor) { StatusOf(sensor); }
