// Events that become one atom each. They count and store nothing.
#include <cstdint>

#include "atoms/sensor_event_atoms.h"
#include "engine/sensor_vela.h"

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

void SensorVela::LogSensorProxEvent(const TarnVelaProxEvent& event) {
  Enqueue(createVendorAtom(atoms::ProxStatusReported{
      .int_0 = event.int_0,
      .int_1 = event.int_1,
      .int_2 = event.int_2,
      .int_3 = event.int_3,
      .int_4 = event.int_4,
      .int_5 = event.int_5,
      .int_6 = event.int_6,
      .int_7 = event.int_7,
      .float_0 = event.float_0,
      .float_1 = event.float_1,
      .float_2 = event.float_2,
      .float_3 = event.float_3,
      .int_8 = event.int_8,
      .int_9 = event.int_9,
      .float_4 = event.float_4,
      .float_5 = event.float_5,
      .float_6 = event.float_6,
  }));
}

void SensorVela::ReportHalLatency(HalOperation operation, SensorId sensor, long long latency_ns) {
  Enqueue(createVendorAtom(atoms::SensorHalLatencyRecorded{
      .sensor_id_high = static_cast<std::int32_t>(sensor.high),
      .sensor_id_low = sensor.low,
      .operation = operation,
      .latency_ns = latency_ns,
  }));
}

void SensorVela::ReportFirmwareState(int subject_id, FirmwareState state, int detail_code) {
  Enqueue(createVendorAtom(atoms::SensorFirmwareStateChanged{
      .subject_id = subject_id,
      .state = state,
      .detail_code = detail_code,
  }));
}
