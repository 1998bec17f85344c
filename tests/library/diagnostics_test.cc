// Tests what the simulation cannot: a host that calls the engine during an upload, and the adapters
// without an engine.
#include <array>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sensorvela/atoms/diagnostics_atoms.h>

#include "tests/library/test_support.h"

namespace sensorvela::testing {
namespace {

namespace atoms = android::hardware::halvard::orrin::vendor::OrrinAtoms;

constexpr char kQueueAtom[] =
    "SensorSystemQueueStressReported{queue_type=%d, value_1=0, value_2=0, value_3=0, value_4=0, "
    "value_5=0, value_6=0}";

/// The calls of a supplier and the atoms queued, in order. The supplier queues a marker at each
/// call.
Texts UploadOf(SupplierKind kind, const testkit::Diagnostics& diagnostics) {
  World world;
  world.diagnostics = diagnostics;
  world.on_ask = [&](DiagnosticsItem asked) {
    world.engine().ReportVendorAtomAsync(Marker(static_cast<int>(asked)));
  };
  world.StartEngine(kind);
  world.TakeHistory();
  world.time.RunTo(6h);
  return world.TakeHistory();
}

std::string QueueAtom(int type) {
  std::string text = kQueueAtom;
  return text.replace(text.find("%d"), 2, std::to_string(type));
}

TEST(UploadTest, QueuesTheAtomsOfAnItemBeforeItAsksForTheNext) {
  testkit::Diagnostics diagnostics;
  diagnostics.processor.emplace();
  diagnostics.queues = {SensorVela::QueueStress{}, std::nullopt, SensorVela::QueueStress{}};
  diagnostics.sensor_usages = {{1, 2, 3, 4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14}};
  const std::string processor =
      "SensorProcessorDiagnosticsReported{value_1=0, value_2=0, value_3=0, value_4=0}";
  const std::string usages =
      "TarnSensorUsageReported{value_1=1, value_2=2, value_3=3, value_4=4, value_5=5, value_6=6, "
      "value_7=7}";
  const std::string more_usages =
      "TarnSensorUsageReported{value_1=8, value_2=9, value_3=10, value_4=11, value_5=12, "
      "value_6=13, value_7=14}";
  EXPECT_THAT(UploadOf(SupplierKind::kSecondGeneration, diagnostics),
              ElementsAre("atom 0{}", processor, "atom 1{}", QueueAtom(1), "atom 2{}", "atom 3{}",
                          QueueAtom(3), "atom 4{}", "atom 5{}", "atom 6{}", usages, more_usages,
                          "atom 7{}", "atom 8{}", "atom 9{}"));
  EXPECT_THAT(UploadOf(SupplierKind::kFirstGeneration, diagnostics),
              ElementsAre("atom 0{}", processor, "atom 1{}", QueueAtom(1), "atom 2{}", QueueAtom(2),
                          "atom 3{}", QueueAtom(3)));
}

TEST(AdaptersTest, TheCallerChoosesBetweenTheMemoryAtomsNotTheRecord) {
  SensorVela::MemoryPressure memory{1, 2, 3, 4, 5.5F, 0, 7, 8, {}, {}};
  EXPECT_EQ(SensorVela::MemServiceabilityAtom(memory).atomId, 100304);
  memory.kind = SensorVela::MemoryPressure::kServiceability;
  EXPECT_EQ(AtomText(SensorVela::MemoryPressureAtom(memory)),
            "SensorMemoryPressureReported{shared_value=1, pressure_value_1=2, pressure_value_2=3, "
            "pressure_value_3=4, pressure_value_4=5.5}");
}

template <typename... Records>
void ExpectZeroDefaults() {
  const auto expect = []<typename Record>(const Record& record) {
    using Words = std::array<std::uint32_t, sizeof(Record) / 4>;
    EXPECT_EQ(std::bit_cast<Words>(record), Words{});
  };
  (expect(Records{}), ...);
}

TEST(RecordsTest, AreZeroByDefault) {
  ExpectZeroDefaults<SensorVela::SensorId, SensorVela::TarnVelaProxEvent, SensorVela::ProcessorDiag,
                     SensorVela::QueueStress, SensorVela::IpcErrorRate, SensorVela::SensorUsage,
                     SensorVela::GatingContext, SensorVela::DramException,
                     SensorVela::AadProxStats>();
  EXPECT_EQ(SensorVela::MemoryPressure{}.kind, 0);  // It has padding.
  EXPECT_EQ(AtomText(SensorVela::MemoryPressureAtom({})),
            "SensorMemoryPressureReported{shared_value=0, pressure_value_1=0, pressure_value_2=0, "
            "pressure_value_3=0, pressure_value_4=0}");
  atoms::SensorMemoryServiceabilityStatsReported zeros;
  zeros.bucket_allocation_count.resize(20);
  zeros.bucket_duration_ms.resize(20);
  EXPECT_EQ(SensorVela::MemServiceabilityAtom({}), createVendorAtom(zeros));
}

}  // namespace
}  // namespace sensorvela::testing
