#include "tools/report/sensor_json.h"

#include <cstdint>
#include <string_view>

namespace sensorvela::tools {
namespace {

Json OrNull(const LogHistogram& histogram, std::int64_t value) {
  return histogram.count() > 0 ? Json(value) : Json();
}

}  // namespace

void AddSensor(SensorVela::SensorId sensor, const SensorNames& names, Json& object) {
  object["sensor_high"] = sensor.high;
  object["sensor_low"] = sensor.low;
  AddSensorName(sensor, names, object);
}

void AddSensorName(SensorVela::SensorId sensor, const SensorNames& names, Json& object) {
  const std::string_view name = names.NameOf(sensor);
  if (!name.empty()) object["sensor_name"] = name;
}

Json ToJson(const Arrivals& arrivals) {
  const LogHistogram& latency = arrivals.latency_ns;
  const LogHistogram& first = arrivals.first_latency_ns;
  const auto rate_hz = arrivals.RateHz();
  return {{"late_samples", arrivals.counts.late},
          {"latency_histogram", arrivals.counts.bands},
          {"median_ns", OrNull(latency, latency.Percentile(0.5))},
          {"p99_ns", OrNull(latency, latency.Percentile(0.99))},
          {"greatest_ns", OrNull(latency, latency.greatest())},
          {"first_median_ns", OrNull(first, first.Percentile(0.5))},
          {"first_greatest_ns", OrNull(first, first.greatest())},
          {"rate_hz", rate_hz ? Json(*rate_hz) : Json()}};
}

Json ToJson(const NotReported& not_reported) {
  return {{"not_disabled", not_reported.not_disabled},
          {"re_enabled", not_reported.re_enabled},
          {"while_disabled", not_reported.while_disabled},
          {"report_lost", not_reported.report_lost}};
}

}  // namespace sensorvela::tools
