#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "atoms/sensor_event_atoms.h"
#include "tests/test_support.h"

namespace android::hardware::halvard::orrin::vendor::OrrinAtoms {
namespace {

using sensorvela::testing::Show;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr std::int64_t kMaxLong = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t kMinInt = std::numeric_limits<std::int32_t>::min();

TEST(AtomsTest, EachBuilderSendsItsIdentifierAndItsMembersInOrder) {
  const struct {
    aidl::android::frameworks::stats::VendorAtom atom;
    const char* shown;
  } kCases[] = {
      {createVendorAtom(
           SensorHalErrorDetected{{}, 1, 2, SensorHalErrorDetected::HalCall{3}, kMinInt}),
       "100024 i1 i2 i3 i-2147483648"},
      {createVendorAtom(
           SensorRuntimeErrorDetected{{}, 1, 2, SensorRuntimeErrorDetected::ErrorType{-1}, 4}),
       "100025 i1 i2 i-1 i4"},
      {createVendorAtom(ProxStatusReported{
           {}, 1, 2, 3, 4, 5, 6, 7, 8, 9.5F, kNan, -0.0F, 12.5F, 13, 14, 15.5F, 16.5F, 17.5F}),
       "100133 i1 i2 i3 i4 i5 i6 i7 i8 f9.5 fnan:7fc00000 f-0 f12.5 i13 i14 f15.5 f16.5 f17.5"},
      {createVendorAtom(HalSensorStateChanged{{}, 1, 2, 3, kMaxLong, 5, 6, {7, 8, 9}}),
       "100242 i1 i2 i3 l9223372036854775807 i5 i6 [ 7 8 9 ]"},
      {createVendorAtom(HalSensorStateChanged{}), "100242 i0 i0 i0 l0 i0 i0 [ ]"},
      {createVendorAtom(
           SensorHalLatencyRecorded{{}, 1, 2, SensorHalLatencyRecorded::Operation{3}, -4}),
       "100243 i1 i2 i3 l-4"},
      {createVendorAtom(SensorFirmwareStateChanged{{}, 1, SensorFirmwareStateChanged::State{2}, 3}),
       "100244 i1 i2 i3"},
      {createVendorAtom(SensorFirstSampleReported{"a domain", 1, 2, 3}), "100245a domain i1 i2 l3"},
  };
  for (const auto& test : kCases) EXPECT_EQ(Show(test.atom), test.shown);
}

}  // namespace
}  // namespace android::hardware::halvard::orrin::vendor::OrrinAtoms
