#include "atoms/diagnostics_atoms.h"

#include <utility>

#include "atoms/build_vendor_atom.h"
#include "atoms/moved_records.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {

using aidl::android::frameworks::stats::VendorAtom;

namespace {

/// The lists are the record's; an rvalue is moved, an lvalue copied.
template <typename List>
VendorAtom BuildMemoryServiceability(const SensorMemoryServiceabilityStatsReported& r,
                                     List&& bucket_allocation_count, List&& bucket_duration_ms) {
  return BuildVendorAtom(r, r.bucket_allocation_total, r.shared_value, r.serviceability_value_1,
                         r.serviceability_value_2, std::forward<List>(bucket_allocation_count),
                         std::forward<List>(bucket_duration_ms));
}

}  // namespace

VendorAtom createVendorAtom(const SensorProcessorDiagnosticsReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4);
}

VendorAtom createVendorAtom(const SensorSystemQueueStressReported& r) {
  return BuildVendorAtom(r, r.queue_type, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5,
                         r.value_6);
}

VendorAtom createVendorAtom(const SensorIpcErrorRateReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4);
}

VendorAtom createVendorAtom(const SensorMemoryPressureReported& r) {
  return BuildVendorAtom(r, r.shared_value, r.pressure_value_1, r.pressure_value_2,
                         r.pressure_value_3, r.pressure_value_4);
}

VendorAtom createVendorAtom(const TarnSensorUsageReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6,
                         r.value_7);
}

VendorAtom createVendorAtom(const SensorGatingContextReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6,
                         r.value_7, r.value_8, r.value_9);
}

VendorAtom createVendorAtom(const SensorCoreDramExceptionsReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5);
}

VendorAtom createVendorAtom(const SensorMemoryServiceabilityStatsReported& r) {
  return BuildMemoryServiceability(r, r.bucket_allocation_count, r.bucket_duration_ms);
}

VendorAtom MoveIntoVendorAtom(SensorMemoryServiceabilityStatsReported r) {
  return BuildMemoryServiceability(r, std::move(r.bucket_allocation_count),
                                   std::move(r.bucket_duration_ms));
}

VendorAtom createVendorAtom(const AADProxStatsReported& r) {
  return BuildVendorAtom(r, r.value_1, r.value_2, r.value_3, r.value_4, r.value_5, r.value_6,
                         r.value_7, r.value_8, r.value_9, r.value_10, r.value_11, r.value_12,
                         r.value_13, r.value_14, r.value_15, r.value_16, r.value_17, r.value_18,
                         r.value_19, r.value_20);
}

}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
