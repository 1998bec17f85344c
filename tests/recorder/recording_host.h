// What the hosts of the recorder's tests do.
#pragma once

#include <utils/SystemClock.h>

#include <limits>
#include <string>

#include <sensorvela/engine/sensor_vela.h>

namespace sensorvela::testing {

/// Calls methods with arguments of every type, the state of a firmware last. The recorded
/// simulation calls them all.
inline void CallMethodsOfEveryKind(SensorVela& engine) {
  using aidl::android::frameworks::stats::VendorAtomValue;
  using Tag = VendorAtomValue::Tag;
  const SensorVela::SensorId sensor = {0xFFFFFFFF, -1};
  engine.ReportHalSensorEnabled(sensor, 1'000'000);
  engine.LogSensorLatency(sensor, android::elapsedRealtimeNano());
  engine.LogSensorLatency(sensor, std::numeric_limits<long long>::min());
  engine.LogSensorLatency({16, 1}, android::elapsedRealtimeNano() - 3'000'000);
  engine.ReportHalSensorDisabled(sensor);
  engine.ReportFirstSample(sensor, -1);
  engine.LogSensorHalError(sensor, SensorVela::HalCall{3}, -22);
  engine.LogSensorRuntimeError(sensor, SensorVela::ErrorType{-3}, 7);
  engine.LogSensorProxEvent({.int_0 = 1, .float_0 = -0.0F, .float_3 = 1e-45F});
  engine.ReportHalLatency(SensorVela::HalOperation{2}, sensor, 5);
  SensorVela::VendorAtom atom;
  atom.reverseDomainName = "quote \" backslash \\ line\n\xC3\xA9";
  atom.atomId = 105'000;
  atom.values = {VendorAtomValue::make<Tag::repeatedBoolValue>(std::vector<bool>{true, false}),
                 VendorAtomValue::make<Tag::byteArrayValue>(std::vector<std::uint8_t>{0, 255}),
                 VendorAtomValue::make<Tag::longValue>(std::numeric_limits<std::int64_t>::min())};
  engine.ReportVendorAtomAsync(atom);
  engine.ReportFirmwareState(1, SensorVela::FirmwareState{4}, -71);
}

}  // namespace sensorvela::testing
