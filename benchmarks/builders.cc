// Each builder, beside an empty atom, one exact allocation, and one store for each value.
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "atoms/diagnostics_atoms.h"
#include "atoms/sensor_event_atoms.h"
#include "atoms/standalone_atoms.h"
#include "benchmarks/comparison.h"
#include "benchmarks/tables.h"

namespace sensorvela::benchmarks {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;
using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;

template <typename Record>
Body Builds(const Record& record) {
  return [record](benchmark::State& state) {
    for (auto _ : state) {
      VendorAtom atom = createVendorAtom(record);
      benchmark::DoNotOptimize(atom);
    }
  };
}

/// Makes `ints` values from as many ints, and one from each of `lists`, in memory of their own: no
/// vector knows of them.
template <std::size_t ints>
Body Stores(const std::vector<std::vector<std::int32_t>>& lists) {
  return [lists](benchmark::State& state) {
    std::array<std::int32_t, ints> members{};
    const std::size_t count = ints + lists.size();
    std::allocator<VendorAtomValue> allocator;
    for (auto _ : state) {
      benchmark::DoNotOptimize(members);
      VendorAtom atom;
      atom.atomId = 1;
      benchmark::DoNotOptimize(atom);
      VendorAtomValue* const values = allocator.allocate(count);
      VendorAtomValue* value = values;
      for (const std::int32_t member : members) {
        std::construct_at(value++, std::in_place_index<0>, member);
      }
      for (const auto& list : lists) std::construct_at(value++, std::in_place_index<5>, list);
      benchmark::DoNotOptimize(values);
      std::destroy_n(values, count);
      allocator.deallocate(values, count);
    }
  };
}

template <std::size_t ints, typename Record>
void AddRow(const char* name, const Record& record,
            const std::vector<std::vector<std::int32_t>>& lists = {}) {
  Add({.table = "createVendorAtom",
       .name = name,
       .ours = Builds(record),
       .floor = Stores<ints>(lists),
       .goal = 1.10});
}

}  // namespace

void AddBuilders() {
  const std::vector<std::int32_t> bands(5);
  const std::vector<std::int32_t> buckets(20);
  AddRow<4>("SensorHalErrorDetected", atoms::SensorHalErrorDetected{});
  AddRow<4>("SensorRuntimeErrorDetected", atoms::SensorRuntimeErrorDetected{});
  AddRow<17>("ProxStatusReported", atoms::ProxStatusReported{});
  AddRow<6>("HalSensorStateChanged", atoms::HalSensorStateChanged{.latency_histogram = bands},
            {bands});
  AddRow<4>("SensorHalLatencyRecorded", atoms::SensorHalLatencyRecorded{});
  AddRow<3>("SensorFirmwareStateChanged", atoms::SensorFirmwareStateChanged{});
  AddRow<3>("SensorFirstSampleReported", atoms::SensorFirstSampleReported{});
  AddRow<4>("SensorProcessorDiagnosticsReported", atoms::SensorProcessorDiagnosticsReported{});
  AddRow<7>("SensorSystemQueueStressReported", atoms::SensorSystemQueueStressReported{});
  AddRow<4>("SensorIpcErrorRateReported", atoms::SensorIpcErrorRateReported{});
  AddRow<5>("SensorMemoryPressureReported", atoms::SensorMemoryPressureReported{});
  AddRow<7>("TarnSensorUsageReported", atoms::TarnSensorUsageReported{});
  AddRow<9>("SensorGatingContextReported", atoms::SensorGatingContextReported{});
  AddRow<5>("SensorCoreDramExceptionsReported", atoms::SensorCoreDramExceptionsReported{});
  AddRow<4>("SensorMemoryServiceabilityStatsReported",
            atoms::SensorMemoryServiceabilityStatsReported{.bucket_allocation_count = buckets,
                                                           .bucket_duration_ms = buckets},
            {buckets, buckets});
  AddRow<20>("AADProxStatsReported", atoms::AADProxStatsReported{});
  AddRow<2>("HingeAngleStateChanged", atoms::HingeAngleStateChanged{});
  AddRow<5>("TarnServerWorkerUsageReported", atoms::TarnServerWorkerUsageReported{});
  AddRow<1>("HingeHallSensorTriggered", atoms::HingeHallSensorTriggered{});
  AddRow<16>("AlsLuxLevelDistributionReported", atoms::AlsLuxLevelDistributionReported{});
}

}  // namespace sensorvela::benchmarks
