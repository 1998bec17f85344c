// What the simulation does not reach: a host that uses the engine in the middle of an upload, and
// the adapters without an engine.
#include <gtest/gtest.h>

#include "tests/test_support.h"

namespace sensorvela::testing {
namespace {

class UploadTest : public ::testing::Test, public World {
 protected:
  UploadTest() {
    diagnostics.processor = SensorVela::ProcessorDiag{1, 2, 3, 4};
    diagnostics.usages = {{1, 2, 3, 4, 5, 6, 7}, {8, 9, 10, 11, 12, 13, 14}};
    Register();
    Start();
    Seen();
  }

  const Texts kUpload = {"100028 i1 i2 i3 i4", "100107 i1 i2 i3 i4 i5 i6 i7",
                         "100107 i8 i9 i10 i11 i12 i13 i14"};
};

TEST_F(UploadTest, ASupplierMayCallTheEngineAndItsAtomsKeepTheirPlace) {
  on_upload = [this] {
    engine->ReportVendorAtomAsync(Marker(1));
    engine->ReportHalSensorEnabled({1, 1}, 5);
  };
  time.RunTo(6h);
  Texts expected = kUpload;
  expected.insert(expected.begin(), {"1", "100242 i1 i1 i2 l5 i-1 i-1 [ ]"});
  EXPECT_EQ(Seen(), expected);
}

TEST(AdaptersTest, TheCallerChoosesBetweenTheMemoryAtomsNotTheRecord) {
  SensorVela::MemoryPressure memory{1, 2, 3, 4, 5.5F, 0, 7, 8, {}, {}};
  EXPECT_EQ(SensorVela::MemServiceabilityAtom(memory).atomId, 100304);
  memory.kind = SensorVela::MemoryPressure::kServiceability;
  EXPECT_EQ(Show(SensorVela::MemoryPressureAtom(memory)), "100070 i1 i2 i3 i4 f5.5");
}

}  // namespace
}  // namespace sensorvela::testing
