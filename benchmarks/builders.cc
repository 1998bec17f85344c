// Each builder, beside an empty atom, one exact allocation, and one store for each value.
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include <sensorvela/atoms/diagnostics_atoms.h>
#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/atoms/standalone_atoms.h>

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

template <typename Member, std::size_t count>
using Run = std::array<Member, count>;
template <std::size_t count>
using Ints = Run<std::int32_t, count>;
template <std::size_t count>
using Floats = Run<float, count>;
using Long = Run<std::int64_t, 1>;
using Bool = Run<bool, 1>;
using List = Run<std::vector<std::int32_t>, 1>;

template <typename Member>
constexpr std::size_t kAlternative = std::is_same_v<Member, std::int32_t>   ? 0
                                     : std::is_same_v<Member, std::int64_t> ? 1
                                     : std::is_same_v<Member, float>        ? 2
                                     : std::is_same_v<Member, bool>         ? 4
                                                                            : 5;

template <typename Member, std::size_t count>
VendorAtomValue* Store(const Run<Member, count>& members, VendorAtomValue* value) {
  for (const Member& member : members) {
    std::construct_at(value++, std::in_place_index<kAlternative<Member>>, member);
  }
  return value;
}

/// Makes a value of each member, in memory of its own: no vector knows of it.
template <typename... Runs>
Body Stores(const Runs&... all) {
  return [members = std::tuple(all...)](benchmark::State& state) mutable {
    constexpr std::size_t kCount = (std::tuple_size_v<Runs> + ...);
    std::allocator<VendorAtomValue> allocator;
    for (auto _ : state) {
      benchmark::DoNotOptimize(members);
      VendorAtom atom;
      atom.atomId = 1;
      benchmark::DoNotOptimize(atom);
      VendorAtomValue* const values = allocator.allocate(kCount);
      VendorAtomValue* value = values;
      std::apply([&](const auto&... runs) { ((value = Store(runs, value)), ...); }, members);
      benchmark::DoNotOptimize(values);
      std::destroy_n(values, kCount);
      allocator.deallocate(values, kCount);
    }
  };
}

/// The baseline's members are of the same kinds in the same order.
template <typename Record, typename... Runs>
void AddRow(const char* name, const Record& record, const Runs&... runs) {
  Add({.table = "createVendorAtom",
       .name = name,
       .operation = Builds(record),
       .baseline = Stores(runs...),
       .goal = 1.10});
}

}  // namespace

void AddBuilders() {
  const List bands = {std::vector<std::int32_t>(5)};
  const List buckets = {std::vector<std::int32_t>(20)};
  AddRow("SensorHalErrorDetected", atoms::SensorHalErrorDetected{}, Ints<4>{});
  AddRow("SensorRuntimeErrorDetected", atoms::SensorRuntimeErrorDetected{}, Ints<4>{});
  AddRow("ProxStatusReported", atoms::ProxStatusReported{}, Ints<8>{}, Floats<4>{}, Ints<2>{},
         Floats<3>{});
  AddRow("HalSensorStateChanged", atoms::HalSensorStateChanged{.latency_histogram = bands[0]},
         Ints<3>{}, Long{}, Ints<2>{}, bands);
  AddRow("SensorHalLatencyRecorded", atoms::SensorHalLatencyRecorded{}, Ints<3>{}, Long{});
  AddRow("SensorFirmwareStateChanged", atoms::SensorFirmwareStateChanged{}, Ints<3>{});
  AddRow("SensorFirstSampleReported", atoms::SensorFirstSampleReported{}, Ints<2>{}, Long{});
  AddRow("SensorProcessorDiagnosticsReported", atoms::SensorProcessorDiagnosticsReported{},
         Ints<4>{});
  AddRow("SensorSystemQueueStressReported", atoms::SensorSystemQueueStressReported{}, Ints<7>{});
  AddRow("SensorIpcErrorRateReported", atoms::SensorIpcErrorRateReported{}, Ints<4>{});
  AddRow("SensorMemoryPressureReported", atoms::SensorMemoryPressureReported{}, Ints<4>{},
         Floats<1>{});
  AddRow("TarnSensorUsageReported", atoms::TarnSensorUsageReported{}, Ints<7>{});
  AddRow("SensorGatingContextReported", atoms::SensorGatingContextReported{}, Ints<9>{});
  AddRow("SensorCoreDramExceptionsReported", atoms::SensorCoreDramExceptionsReported{}, Ints<5>{});
  AddRow("SensorMemoryServiceabilityStatsReported",
         atoms::SensorMemoryServiceabilityStatsReported{.bucket_allocation_count = buckets[0],
                                                        .bucket_duration_ms = buckets[0]},
         Ints<4>{}, buckets, buckets);
  AddRow("AADProxStatsReported", atoms::AADProxStatsReported{}, Ints<8>{}, Floats<6>{}, Ints<6>{});
  AddRow("HingeAngleStateChanged", atoms::HingeAngleStateChanged{}, Ints<2>{});
  AddRow("TarnServerWorkerUsageReported", atoms::TarnServerWorkerUsageReported{}, Ints<5>{});
  AddRow("HingeHallSensorTriggered", atoms::HingeHallSensorTriggered{}, Bool{});
  AddRow("AlsLuxLevelDistributionReported", atoms::AlsLuxLevelDistributionReported{}, Ints<16>{});
}

}  // namespace sensorvela::benchmarks
