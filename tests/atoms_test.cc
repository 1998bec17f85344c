// The builders that no event and no upload reaches; the simulation sees all the others' atoms.
#include <gtest/gtest.h>

#include <sensorvela/atoms/sensor_event_atoms.h>
#include <sensorvela/atoms/standalone_atoms.h>

#include "tests/show_atom.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {
namespace {

using sensorvela::testing::Show;

TEST(AtomsTest, TheStandaloneBuildersSendTheirMembersInOrder) {
  EXPECT_EQ(Show(createVendorAtom(HingeAngleStateChanged{})), "100106 i0 i0");
  EXPECT_EQ(Show(createVendorAtom(HingeAngleStateChanged{"a domain", 1, -1})),
            "100106a domain i1 i-1");
  EXPECT_EQ(Show(createVendorAtom(TarnServerWorkerUsageReported{{}, 1, 2, 3, 4, -5})),
            "100108 i1 i2 i3 i4 i-5");
  EXPECT_EQ(Show(createVendorAtom(HingeHallSensorTriggered{{}, true})), "100147 true");
  EXPECT_EQ(Show(createVendorAtom(AlsLuxLevelDistributionReported{
                {}, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})),
            "100250 i1 i2 i3 i4 i5 i6 i7 i8 i9 i10 i11 i12 i13 i14 i15 i16");
}

TEST(AtomsTest, TheListOfValuesHasItsExactSize) {
  const auto atom = createVendorAtom(HalSensorStateChanged{{}, 1, 2, 3, 4, 5, 6, {7, 8}});
  EXPECT_EQ(atom.values.capacity(), 7U);
  using Value = aidl::android::frameworks::stats::VendorAtomValue;
  const auto& list = atom.values.back().get<Value::repeatedIntValue>();
  EXPECT_EQ(list ? list->capacity() : 0, 2U);
}

}  // namespace
}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
