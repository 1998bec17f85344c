// Failed HAL calls and runtime errors: counted per call or error type, capped per cycle.
#include <android/log.h>

#include <cstdint>

#include "atoms/sensor_event_atoms.h"
#include "engine/counting_rules.h"
#include "engine/log_lines.h"
#include "engine/log_tag.h"
#include "engine/sensor_vela.h"

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using sensorvela::platform::MutexLock;

void SensorVela::LogSensorHalError(SensorId sensor, HalCall call, int error) {
  const auto enumerator = static_cast<std::int32_t>(call);
  if (!CountError(kHalErrorFamily, enumerator)) return;
  __android_log_print(ANDROID_LOG_INFO, sensorvela::kLogTag, sensorvela::kHalErrorLine, enumerator,
                      error, sensor.high);
  Enqueue(createVendorAtom(atoms::SensorHalErrorDetected{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .hal_call = call,
      .error_code = error,
  }));
}

void SensorVela::LogSensorRuntimeError(SensorId sensor, ErrorType type, int code) {
  const auto enumerator = static_cast<std::int32_t>(type);
  if (!CountError(kRuntimeErrorFamily, enumerator)) return;
  __android_log_print(ANDROID_LOG_INFO, sensorvela::kLogTag, sensorvela::kRuntimeErrorLine,
                      enumerator, code, sensor.high);
  Enqueue(createVendorAtom(atoms::SensorRuntimeErrorDetected{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .error_type = type,
      .error_code = code,
  }));
}

bool SensorVela::CountError(ErrorFamily family, std::int32_t enumerator) {
  const std::uint64_t key = std::uint64_t{family} << 32 | static_cast<std::uint32_t>(enumerator);
  const MutexLock lock(error_counts_mutex_);
  const std::uint32_t count = ++error_counts_[key];
  if (count <= sensorvela::kErrorCapPerCycle) return true;
  if (family == kHalErrorFamily) {
    __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag, sensorvela::kHalErrorBlockedLine,
                        enumerator, count, sensorvela::kErrorCapPerCycle);
  } else {
    __android_log_print(ANDROID_LOG_ERROR, sensorvela::kLogTag,
                        sensorvela::kRuntimeErrorBlockedLine, enumerator, count,
                        sensorvela::kErrorCapPerCycle);
  }
  return false;
}
