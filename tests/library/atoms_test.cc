// Tests what every builder guarantees, and the builders that neither an event nor the upload calls.
// The simulation checks the atoms of the others.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include <sensorvela/testkit/atom_text.h>

#include "atoms/all_records.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {
namespace {

using aidl::android::frameworks::stats::VendorAtom;
using aidl::android::frameworks::stats::VendorAtomValue;
using sensorvela::testkit::AtomText;

void ExpectDefaults(const VendorAtom& atom) {
  using Value = VendorAtomValue;
  const std::vector<std::int32_t> empty;
  const Value kDefaults[] = {Value::make<Value::intValue>(0), Value::make<Value::longValue>(0),
                             Value::make<Value::floatValue>(0.0F),
                             Value::make<Value::boolValue>(false),
                             Value::make<Value::repeatedIntValue>(empty)};
  SCOPED_TRACE(AtomText(atom));
  EXPECT_EQ(atom.reverseDomainName, "");
  EXPECT_FALSE(atom.valuesAnnotations || atom.atomAnnotations);
  EXPECT_EQ(atom.values.capacity(), atom.values.size());
  for (const Value& value : atom.values) {
    EXPECT_NE(std::find(std::begin(kDefaults), std::end(kDefaults), value), std::end(kDefaults));
  }
}

TEST(AtomsTest, ARecordLeftAtItsDefaultsGivesZeroFalseAndEmptyLists) {
  AllRecords::ForEach([]<typename Record>() {
    const Record record;  // Compiles only while every member has a default.
    ExpectDefaults(createVendorAtom(record));
  });
}

TEST(AtomsTest, TheStandaloneBuildersSendTheirMembersInOrder) {
  EXPECT_EQ(AtomText(createVendorAtom(HingeAngleStateChanged{"a domain", 1, -1})),
            "HingeAngleStateChanged{domain=\"a domain\", value_1=1, value_2=-1}");
  EXPECT_EQ(AtomText(createVendorAtom(TarnServerWorkerUsageReported{{}, 1, 2, 3, 4, -5})),
            "TarnServerWorkerUsageReported{value_1=1, value_2=2, value_3=3, value_4=4, "
            "value_5=-5}");
  EXPECT_EQ(AtomText(createVendorAtom(HingeHallSensorTriggered{{}, true})),
            "HingeHallSensorTriggered{value_1=true}");
  EXPECT_EQ(AtomText(createVendorAtom(AlsLuxLevelDistributionReported{
                {}, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})),
            "AlsLuxLevelDistributionReported{value_1=1, value_2=2, value_3=3, value_4=4, "
            "value_5=5, value_6=6, value_7=7, value_8=8, value_9=9, value_10=10, value_11=11, "
            "value_12=12, value_13=13, value_14=14, value_15=15, value_16=16}");
}

TEST(AtomsTest, ARepeatedValueHasItsExactSize) {
  const auto atom = createVendorAtom(HalSensorStateChanged{.latency_histogram = {7, 8}});
  const auto& list = atom.values.back().get<VendorAtomValue::repeatedIntValue>();
  EXPECT_EQ(list ? list->capacity() : 0, 2U);
}

}  // namespace
}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
