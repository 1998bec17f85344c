#include "atoms/sensor_event_atoms.h"

#include <utility>

#include "atoms/build_vendor_atom.h"
#include "atoms/moved_records.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

using aidl::android::frameworks::stats::VendorAtom;

namespace {

/// `latency_histogram` is the record's; an rvalue is moved, an lvalue copied.
template <typename List>
VendorAtom BuildStateChange(const HalSensorStateChanged& r, List&& latency_histogram) {
  return BuildVendorAtom(r, r.sensor_id_high, r.sensor_id_low, r.state, r.sampling_period_ns,
                         r.sample_count, r.late_sample_count,
                         std::forward<List>(latency_histogram));
}

}  // namespace

VendorAtom createVendorAtom(const SensorHalErrorDetected& r) {
  return BuildVendorAtom(r, r.sensor_id_high, r.sensor_id_low, r.hal_call, r.error_code);
}

VendorAtom createVendorAtom(const SensorRuntimeErrorDetected& r) {
  return BuildVendorAtom(r, r.sensor_id_high, r.sensor_id_low, r.error_type, r.error_code);
}

VendorAtom createVendorAtom(const ProxStatusReported& r) {
  return BuildVendorAtom(r, r.int_0, r.int_1, r.int_2, r.int_3, r.int_4, r.int_5, r.int_6, r.int_7,
                         r.float_0, r.float_1, r.float_2, r.float_3, r.int_8, r.int_9, r.float_4,
                         r.float_5, r.float_6);
}

VendorAtom createVendorAtom(const HalSensorStateChanged& r) {
  return BuildStateChange(r, r.latency_histogram);
}

VendorAtom MoveIntoVendorAtom(HalSensorStateChanged r) {
  return BuildStateChange(r, std::move(r.latency_histogram));
}

VendorAtom createVendorAtom(const SensorHalLatencyRecorded& r) {
  return BuildVendorAtom(r, r.sensor_id_high, r.sensor_id_low, r.operation, r.latency_ns);
}

VendorAtom createVendorAtom(const SensorFirmwareStateChanged& r) {
  return BuildVendorAtom(r, r.subject_id, r.state, r.detail_code);
}

VendorAtom createVendorAtom(const SensorFirstSampleReported& r) {
  return BuildVendorAtom(r, r.sensor_id_high, r.sensor_id_low, r.first_sample_latency_ns);
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
