// What holds for each builder, and the builders that no event and no upload reaches; the simulation
// sees all the others' atoms.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "atoms/all_records.h"
#include "tests/show_atom.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using sensorvela::testing::Show;
using sensorvela::testing::ShowValue;

void ExpectDefaults(const VendorAtom& atom) {
  const std::set<std::string> kDefaults = {"i0", "l0", "f0", "false", "[ ]"};
  SCOPED_TRACE(Show(atom));
  EXPECT_EQ(atom.reverseDomainName, "");
  EXPECT_FALSE(atom.valuesAnnotations || atom.atomAnnotations);
  EXPECT_EQ(atom.values.capacity(), atom.values.size());
  for (const VendorAtomValue& value : atom.values) {
    EXPECT_TRUE(kDefaults.contains(ShowValue(value)));
  }
}

TEST(AtomsTest, ARecordLeftAtItsDefaultsGivesZeroFalseAndEmptyLists) {
  AllRecords::ForEach([]<typename Record>() {
    const Record record;  // Compiles only while every member has a default.
    ExpectDefaults(createVendorAtom(record));
  });
}

TEST(AtomsTest, TheStandaloneBuildersSendTheirMembersInOrder) {
  EXPECT_EQ(Show(createVendorAtom(HingeAngleStateChanged{"a domain", 1, -1})),
            "100106a domain i1 i-1");
  EXPECT_EQ(Show(createVendorAtom(TarnServerWorkerUsageReported{{}, 1, 2, 3, 4, -5})),
            "100108 i1 i2 i3 i4 i-5");
  EXPECT_EQ(Show(createVendorAtom(HingeHallSensorTriggered{{}, true})), "100147 true");
  EXPECT_EQ(Show(createVendorAtom(AlsLuxLevelDistributionReported{
                {}, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})),
            "100250 i1 i2 i3 i4 i5 i6 i7 i8 i9 i10 i11 i12 i13 i14 i15 i16");
}

TEST(AtomsTest, ARepeatedValueHasItsExactSize) {
  const auto atom = createVendorAtom(HalSensorStateChanged{.latency_histogram = {7, 8}});
  const auto& list = atom.values.back().get<VendorAtomValue::repeatedIntValue>();
  EXPECT_EQ(list ? list->capacity() : 0, 2U);
}

}  // namespace
}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
