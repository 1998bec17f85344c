// An atom as a line of text, by the names of its values.
#pragma once

#include <aidl/android/frameworks/stats/VendorAtom.h>

#include <iosfwd>
#include <string>

namespace sensorvela::testkit {

/// The atom on one line: `SensorFirstSampleReported{sensor_id_high=16, sensor_id_low=2,
/// first_sample_latency_ns=1000000}`.
///
/// Atoms with different texts differ, and atoms with the same text are the same to the bit, but for
/// their annotations, of which it says only that there are some. A value whose kind is not the one
/// in the catalogue has its kind before it (`state=long 2`), and so has each value of an atom that
/// the catalogue does not have (`atom 42{value_1=int 7}`). A NaN has its bits (`nan(0x7fc00000)`).
std::string AtomText(const aidl::android::frameworks::stats::VendorAtom& atom);

}  // namespace sensorvela::testkit

namespace aidl::android::frameworks::stats {

/// GoogleTest and GoogleMock write an atom into their messages with this, as `AtomText` does.
void PrintTo(const VendorAtom& atom, std::ostream* out);

}  // namespace aidl::android::frameworks::stats
